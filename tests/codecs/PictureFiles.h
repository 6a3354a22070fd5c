// Writes small PNG and TIFF files by hand, so that tests of the readers rest on no library.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace paperline::testing_support {

using Bytes = std::vector<uint8_t>;

inline void append(Bytes& to, const Bytes& from) {
    to.insert(to.end(), from.begin(), from.end());
}

inline Bytes bigEndian(uint32_t number) {
    return {static_cast<uint8_t>(number >> 24U),
            static_cast<uint8_t>(number >> 16U),
            static_cast<uint8_t>(number >> 8U),
            static_cast<uint8_t>(number)};
}

inline uint32_t crc32(const Bytes& bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

inline Bytes pngChunk(std::string_view type, const Bytes& content) {
    Bytes checked(type.begin(), type.end());
    append(checked, content);
    Bytes chunk = bigEndian(static_cast<uint32_t>(content.size()));
    append(chunk, checked);
    append(chunk, bigEndian(crc32(checked)));
    return chunk;
}

// One stored block: no compression.
inline Bytes zlibStored(const Bytes& content) {
    uint32_t a = 1;
    uint32_t b = 0;
    for (const uint8_t byte : content) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    const auto size = static_cast<uint16_t>(content.size());
    Bytes stream{0x78,
                 0x01,
                 0x01,
                 static_cast<uint8_t>(size),
                 static_cast<uint8_t>(size >> 8U),
                 static_cast<uint8_t>(~size),
                 static_cast<uint8_t>(~size >> 8U)};
    append(stream, content);
    append(stream, bigEndian(b << 16U | a));
    return stream;
}

struct PngPicture {
    uint32_t width = 1;
    uint32_t height = 1;
    uint8_t bits = 8;
    uint8_t colour = 0; // 0 grey, 2 RGB, 3 palette, 4 grey and alpha, 6 RGB and alpha
    Bytes rows;         // each row starts with its filter byte
    Bytes chunks;       // between header and data
};

inline Bytes pngFile(const PngPicture& picture) {
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header = bigEndian(picture.width);
    append(header, bigEndian(picture.height));
    append(header, {picture.bits, picture.colour, 0, 0, 0});
    append(file, pngChunk("IHDR", header));
    append(file, picture.chunks);
    append(file, pngChunk("IDAT", zlibStored(picture.rows)));
    append(file, pngChunk("IEND", {}));
    return file;
}

struct TiffTag {
    uint16_t tag;
    uint16_t type; // 3: 16 bits, 4: 32 bits, 5: fraction
    std::vector<uint32_t> values;
};

struct TiffPage {
    std::vector<TiffTag> tags; // ascending; without StripOffsets and StripByteCounts
    Bytes strip;
};

// A little-endian TIFF with one strip a page.
class TiffFile {
public:
    TiffFile() : bytes_{'I', 'I', 42, 0, 0, 0, 0, 0} {}

    void add(const TiffPage& page) {
        const auto stripAt = static_cast<uint32_t>(bytes_.size());
        append(bytes_, page.strip);
        std::vector<TiffTag> tags = page.tags;
        insert(tags, {273, 4, {stripAt}});
        insert(tags, {279, 4, {static_cast<uint32_t>(page.strip.size())}});
        Bytes entries;
        for (const TiffTag& tag : tags)
            append(entries, entry(tag));
        align();
        put32(linkAt_, static_cast<uint32_t>(bytes_.size()));
        const auto count = static_cast<uint16_t>(tags.size());
        append(bytes_, {static_cast<uint8_t>(count), static_cast<uint8_t>(count >> 8U)});
        append(bytes_, entries);
        linkAt_ = bytes_.size();
        append(bytes_, {0, 0, 0, 0});
    }

    const Bytes& bytes() const { return bytes_; }

private:
    static void insert(std::vector<TiffTag>& tags, const TiffTag& tag) {
        auto at = tags.begin();
        while (at != tags.end() && at->tag < tag.tag)
            ++at;
        tags.insert(at, tag);
    }

    static void little(Bytes& to, uint32_t value, int byteCount) {
        for (int index = 0; index < byteCount; ++index)
            to.push_back(static_cast<uint8_t>(value >> static_cast<unsigned>(8 * index)));
    }

    void align() {
        if (bytes_.size() % 2 != 0)
            bytes_.push_back(0);
    }

    void put32(size_t at, uint32_t value) {
        for (size_t index = 0; index < 4; ++index)
            bytes_[at + index] = static_cast<uint8_t>(value >> (8 * index));
    }

    // Values that do not fit into four bytes go to the file's end, before the directory.
    Bytes entry(const TiffTag& tag) {
        Bytes values;
        for (const uint32_t value : tag.values)
            little(values, value, tag.type == 3 ? 2 : 4);
        Bytes result;
        little(result, tag.tag, 2);
        little(result, tag.type, 2);
        little(result, static_cast<uint32_t>(tag.values.size()) / (tag.type == 5 ? 2 : 1), 4);
        if (values.size() > 4) {
            align();
            little(result, static_cast<uint32_t>(bytes_.size()), 4);
            append(bytes_, values);
            return result;
        }
        values.resize(4);
        append(result, values);
        return result;
    }

    Bytes bytes_;
    size_t linkAt_ = 4;
};

} // namespace paperline::testing_support

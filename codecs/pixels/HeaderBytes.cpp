#include "codecs/pixels/HeaderBytes.h"

#include <algorithm>

namespace paperline {

bool HeaderBytes::open(const std::string& path) {
    std::optional<RegularFile> file = openRegularFile(path);
    if (!file)
        return false;
    length_ = static_cast<uint64_t>(file->status.st_size);
    file_ = std::move(file->descriptor);
    return true;
}

void HeaderBytes::narrowTo(uint64_t start, uint64_t length) {
    if (start > length_)
        start = length_;
    start_ += start;
    length_ = std::min(length, length_ - start);
}

bool HeaderBytes::read(uint64_t offset, std::span<uint8_t> target) {
    if (offset > length_ || target.size() > length_ - offset)
        return false;
    const uint64_t from = start_ + offset;
    const bool cached = from >= cachedFrom_ && from - cachedFrom_ <= cachedCount_ &&
                        target.size() <= cachedCount_ - (from - cachedFrom_);
    if (!cached && target.size() <= cache_.size()) {
        cachedFrom_ = from;
        cachedCount_ = readAt(file_.number(), from, cache_);
        if (cachedCount_ < target.size())
            return false;
    } else if (!cached) {
        return readAt(file_.number(), from, target) == target.size();
    }
    std::copy_n(
        cache_.begin() + static_cast<ptrdiff_t>(from - cachedFrom_), target.size(), target.begin());
    return true;
}

std::optional<uint8_t> HeaderBytes::byteAt(uint64_t offset) {
    std::array<uint8_t, 1> bytes{};
    return read(offset, bytes) ? std::optional(bytes[0]) : std::nullopt;
}

std::optional<uint16_t> HeaderBytes::numberAt16(uint64_t offset, bool bigEndian) {
    std::array<uint8_t, 2> bytes{};
    return read(offset, bytes) ? std::optional(numberFrom16(bytes, bigEndian)) : std::nullopt;
}

std::optional<uint32_t> HeaderBytes::numberAt32(uint64_t offset, bool bigEndian) {
    std::array<uint8_t, 4> bytes{};
    return read(offset, bytes) ? std::optional(numberFrom32(bytes, bigEndian)) : std::nullopt;
}

uint16_t numberFrom16(std::span<const uint8_t> bytes, bool bigEndian) {
    const unsigned first = bytes[0];
    const unsigned second = bytes[1];
    return static_cast<uint16_t>(bigEndian ? first << 8U | second : second << 8U | first);
}

uint32_t numberFrom32(std::span<const uint8_t> bytes, bool bigEndian) {
    const uint32_t first = numberFrom16(bytes.first(2), bigEndian);
    const uint32_t second = numberFrom16(bytes.subspan(2, 2), bigEndian);
    return bigEndian ? first << 16U | second : second << 16U | first;
}

} // namespace paperline

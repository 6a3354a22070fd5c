#include "platform/PngStream.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <libdeflate.h>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;
using Span = std::span<const uint8_t>;

constexpr size_t signatureBytes = 8;
constexpr size_t chunkFrame = 12; // length, type and checksum
constexpr uint32_t checksumOfNothing = 1;
constexpr size_t streamHeaderBytes = 2;
constexpr size_t streamChecksumBytes = 4;
constexpr std::array<uint8_t, 5> lastEmptyBlock{1, 0, 0, 0xFF, 0xFF};
// Our writer puts 256 KB into a chunk, or a single row. Others' chunks may swell to anything.
constexpr size_t mostContentBytes = 4 * 1024 * 1024;
// Chunks that wait for the reader.
constexpr size_t mostAhead = 32;
// Below this a thread costs more than it saves.
constexpr size_t fewestCompressedBytes = 512 * 1024;

uint32_t bigEndian(Span bytes) {
    return uint32_t{bytes[0]} << 24U | uint32_t{bytes[1]} << 16U | uint32_t{bytes[2]} << 8U |
           uint32_t{bytes[3]};
}

void appendBigEndian(Bytes& bytes, uint32_t value) {
    for (unsigned shift = 32; shift > 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> (shift - 8)));
}

bool hasType(Span chunk, const char* type) {
    return std::memcmp(chunk.data() + 4, type, 4) == 0;
}

// The chunk at the front, its frame included; empty when it is not whole.
Span firstChunk(Span file) {
    if (file.size() < chunkFrame)
        return {};
    const uint64_t length = uint64_t{bigEndian(file)} + chunkFrame;
    return length <= file.size() ? file.first(static_cast<size_t>(length)) : Span();
}

// Header, IDAT chunks one behind the other, and the rest.
struct FileParts {
    Span before;
    std::vector<Span> pictureChunks;
    Span behind;
};

FileParts divide(Span file) {
    FileParts parts{file, {}, {}};
    if (file.size() < signatureBytes)
        return parts;
    Span rest = file.subspan(signatureBytes);
    for (Span chunk = firstChunk(rest); !chunk.empty(); chunk = firstChunk(rest)) {
        if (hasType(chunk, "IDAT"))
            parts.pictureChunks.push_back(chunk);
        else if (!parts.pictureChunks.empty())
            break;
        rest = rest.subspan(chunk.size());
    }
    if (parts.pictureChunks.empty())
        return parts;
    const auto start = static_cast<size_t>(parts.pictureChunks.front().data() - file.data());
    parts.before = file.first(start);
    parts.behind = rest;
    return parts;
}

bool isWorthOpening(const FileParts& parts) {
    if (parts.pictureChunks.size() < 2)
        return false;
    size_t sum = 0;
    for (const Span& chunk : parts.pictureChunks)
        sum += chunk.size();
    return sum >= fewestCompressedBytes && parts.pictureChunks.front().size() > chunkFrame + 2 &&
           parts.pictureChunks.back().size() > chunkFrame + streamChecksumBytes;
}

bool isChecksumRight(Span chunk) {
    const Span guarded = chunk.subspan(4, chunk.size() - 8);
    return libdeflate_crc32(0, guarded.data(), guarded.size()) == bigEndian(chunk.last(4));
}

struct DecompressorFreer {
    void operator()(libdeflate_decompressor* decompressor) const noexcept {
        libdeflate_free_decompressor(decompressor);
    }
};

// Opens chunks; each thread has one of its own.
class ChunkOpener {
public:
    // The chunk's content, and nothing when it does not stand for itself.
    Bytes open(Span data, bool isLast) {
        compressed_.assign(data.begin(), data.end());
        compressed_.insert(compressed_.end(), lastEmptyBlock.begin(), lastEmptyBlock.end());
        const size_t wanted = isLast ? data.size() : compressed_.size();
        constexpr size_t usualBytes = 300 * 1024;
        for (Bytes content(usualBytes);; content.resize(mostContentBytes)) {
            size_t taken = 0;
            size_t given = 0;
            const libdeflate_result result = decompress(content, taken, given);
            if (result == LIBDEFLATE_INSUFFICIENT_SPACE && content.size() < mostContentBytes)
                continue;
            if (result != LIBDEFLATE_SUCCESS || taken != wanted)
                return {};
            content.resize(given);
            return content;
        }
    }

private:
    libdeflate_result decompress(Bytes& content, size_t& taken, size_t& given) const {
        if (!decompressor_)
            return LIBDEFLATE_BAD_DATA;
        return libdeflate_deflate_decompress_ex(decompressor_.get(),
                                                compressed_.data(),
                                                compressed_.size(),
                                                content.data(),
                                                content.size(),
                                                &taken,
                                                &given);
    }

    std::unique_ptr<libdeflate_decompressor, DecompressorFreer> decompressor_{
        libdeflate_alloc_decompressor()};
    Bytes compressed_;
};

// The content as an IDAT chunk of stored blocks (RFC 1951, 3.2.4).
Bytes storedChunk(Span content, bool isFirst, bool isLast) {
    constexpr size_t mostInBlock = 65535;
    Bytes chunk;
    chunk.reserve(content.size() + content.size() / mostInBlock * 5 + 64);
    appendBigEndian(chunk, 0); // the length, known at the end
    for (const char letter : {'I', 'D', 'A', 'T'})
        chunk.push_back(static_cast<uint8_t>(letter));
    if (isFirst)
        chunk.insert(chunk.end(), {0x78, 0x01});
    while (!content.empty()) {
        const Span block = content.first(std::min(content.size(), mostInBlock));
        const auto low = static_cast<uint8_t>(block.size());
        const auto high = static_cast<uint8_t>(block.size() >> 8U);
        chunk.insert(chunk.end(),
                     {0, low, high, static_cast<uint8_t>(~low), static_cast<uint8_t>(~high)});
        chunk.insert(chunk.end(), block.begin(), block.end());
        content = content.subspan(block.size());
    }
    if (isLast) {
        chunk.insert(chunk.end(), lastEmptyBlock.begin(), lastEmptyBlock.end());
        appendBigEndian(chunk, 0);
    }
    Bytes length;
    appendBigEndian(length, static_cast<uint32_t>(chunk.size() - 8));
    std::copy(length.begin(), length.end(), chunk.begin());
    appendBigEndian(chunk, 0);
    return chunk;
}

} // namespace

class PngStream::OpenedChunks {
public:
    explicit OpenedChunks(std::vector<Span> chunks)
        : chunks_(std::move(chunks)), contents_(chunks_.size()), isOpen_(chunks_.size()) {
        try {
            helper_ = std::thread([this] {
                ChunkOpener opener;
                do {
                    waitForReader();
                } while (openNext(opener));
            });
        } catch (const std::system_error&) {
            // The reader opens them all.
        }
    }
    ~OpenedChunks() {
        next_ = chunks_.size();
        taken_ = chunks_.size();
        taken_.notify_one();
        if (helper_.joinable())
            helper_.join();
    }
    OpenedChunks(const OpenedChunks&) = delete;
    OpenedChunks& operator=(const OpenedChunks&) = delete;

    // Whether every chunk was taken, and was as it should be.
    bool isThrough() const { return taken_ == chunks_.size() && !failed_; }

    // The next chunk, stored; good until the next call. Empty behind the last one and on an error.
    Span takeStored() {
        if (taken_ == chunks_.size() || failed_)
            return {};
        const size_t number = taken_++;
        taken_.notify_one();
        while (!isOpen_[number].load(std::memory_order_acquire))
            if (!openNext(ownOpener_))
                isOpen_[number].wait(false, std::memory_order_acquire);
        const Bytes content = std::move(contents_[number]);
        checksum_ = libdeflate_adler32(checksum_, content.data(), content.size());
        const bool isLast = number + 1 == chunks_.size();
        failed_ = content.empty() || (isLast && checksum_ != storedChecksum());
        if (failed_)
            return {};
        stored_ = storedChunk(content, number == 0, isLast);
        return stored_;
    }

private:
    // The data without the stream's header and checksum around it.
    Span dataOf(size_t number) const {
        Span data = chunks_[number];
        data = data.subspan(8, data.size() - chunkFrame);
        if (number == 0)
            data = data.subspan(streamHeaderBytes);
        if (number + 1 == chunks_.size())
            data = data.first(data.size() - streamChecksumBytes);
        return data;
    }
    uint32_t storedChecksum() const {
        const Span last = chunks_.back();
        return bigEndian(last.subspan(last.size() - 4 - streamChecksumBytes));
    }

    void waitForReader() const {
        size_t taken = taken_;
        while (next_ < chunks_.size() && next_ >= taken + mostAhead) {
            taken_.wait(taken);
            taken = taken_;
        }
    }

    // False when all have been begun.
    bool openNext(ChunkOpener& opener) {
        const size_t number = next_.fetch_add(1);
        if (number >= chunks_.size())
            return false;
        try {
            if (isChecksumRight(chunks_[number]))
                contents_[number] = opener.open(dataOf(number), number + 1 == chunks_.size());
        } catch (const std::bad_alloc&) {
            contents_[number].clear();
        }
        if (contents_[number].empty())
            next_ = chunks_.size(); // nobody will want the others
        isOpen_[number].store(true, std::memory_order_release);
        isOpen_[number].notify_one();
        return true;
    }

    std::vector<Span> chunks_;
    std::vector<Bytes> contents_;
    std::vector<std::atomic<bool>> isOpen_;
    std::atomic<size_t> next_{0};
    std::atomic<size_t> taken_{0};
    bool failed_ = false;
    uint32_t checksum_ = checksumOfNothing;
    Bytes stored_;
    ChunkOpener ownOpener_;
    std::thread helper_; // last: it uses the others
};

PngStream::PngStream(std::span<const uint8_t> file, Picture picture) : now_(file) {
    if (picture == Picture::asStored)
        return;
    FileParts parts = divide(file);
    if (!isWorthOpening(parts))
        return;
    opened_ = std::make_unique<OpenedChunks>(std::move(parts.pictureChunks));
    now_ = parts.before;
    behind_ = parts.behind;
}

PngStream::~PngStream() = default;

bool PngStream::read(std::span<uint8_t> target) {
    while (!target.empty()) {
        if (now_.empty() && opened_) {
            now_ = opened_->takeStored();
            if (now_.empty() && opened_->isThrough())
                now_ = std::exchange(behind_, {});
        }
        const size_t count = std::min(target.size(), now_.size());
        if (count == 0)
            return false;
        std::memcpy(target.data(), now_.data(), count);
        now_ = now_.subspan(count);
        target = target.subspan(count);
    }
    return true;
}

} // namespace paperline

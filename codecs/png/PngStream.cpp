#include "codecs/png/PngStream.h"

#include "platform/files/ByteOrder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include <libdeflate.h>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;
using Span = std::span<const uint8_t>;

constexpr size_t signatureBytes = 8;
constexpr size_t lengthAndTypeBytes = 8;
constexpr size_t frameBytes = lengthAndTypeBytes + 4; // with the checksum
constexpr size_t streamHeaderBytes = 2;
constexpr size_t streamChecksumBytes = 4;
constexpr uint32_t checksumOfNothing = 1;
constexpr std::array<uint8_t, 5> lastEmptyBlock{1, 0, 0, 0xFF, 0xFF};
// Our writer puts 256 KB or a single row into a chunk. Others' chunks may inflate to any size.
constexpr size_t mostContentBytes = 4 * 1024 * 1024;
// Chunks that are inflated ahead of the reader.
constexpr size_t mostAhead = 32;
// Buffers kept for reuse.
constexpr size_t mostSpareBuffers = 4;
// For less, a thread costs more than it saves.
constexpr size_t fewestCompressedBytes = 512 * 1024;

uint32_t bigEndian(Span bytes) {
    return readInteger<uint32_t>(bytes, std::endian::big);
}

bool hasType(Span chunk, const char* type) {
    return std::memcmp(chunk.data() + 4, type, 4) == 0;
}

// The first chunk with its frame; empty when it is not complete.
Span firstChunk(Span file) {
    if (file.size() < frameBytes)
        return {};
    const uint64_t length = uint64_t{bigEndian(file)} + frameBytes;
    return length <= file.size() ? file.first(static_cast<size_t>(length)) : Span();
}

// The IDAT chunks, if they are consecutive and only IEND follows; the library reads other files.
std::vector<Span> dataChunks(Span file) {
    std::vector<Span> chunks;
    if (file.size() < signatureBytes)
        return chunks;
    Span rest = file.subspan(signatureBytes);
    for (Span chunk = firstChunk(rest); !chunk.empty(); chunk = firstChunk(rest)) {
        if (hasType(chunk, "IDAT"))
            chunks.push_back(chunk);
        else if (!chunks.empty())
            return hasType(chunk, "IEND") && chunk.size() == frameBytes ? chunks
                                                                        : std::vector<Span>();
        rest = rest.subspan(chunk.size());
    }
    return {};
}

// Deflate without a dictionary (RFC 1950, 2.2).
bool isStreamHeader(Span bytes) {
    return (bytes[0] & 0x0FU) == 8 && (bytes[1] & 0x20U) == 0 &&
           readInteger<uint16_t>(bytes, std::endian::big) % 31 == 0;
}

bool areWorthInflating(const std::vector<Span>& chunks) {
    if (chunks.size() < 2)
        return false;
    size_t sum = 0;
    for (const Span& chunk : chunks)
        sum += chunk.size();
    return sum >= fewestCompressedBytes && chunks.front().size() > frameBytes + streamHeaderBytes &&
           chunks.back().size() > frameBytes + streamChecksumBytes &&
           isStreamHeader(chunks.front().subspan(lengthAndTypeBytes));
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

// An inflated chunk. Its buffer is reused for others: page faults in fresh memory cost more than
// inflating.
struct Content {
    Bytes buffer;
    size_t count = 0; // 0: damaged

    Span all() const { return Span(buffer).first(count); }
};

// Each thread has its own.
class ChunkInflater {
public:
    // Leaves the content empty when the data is damaged or refers to data before it.
    void inflate(Span data, bool isLast, Content& content) {
        // libdeflate takes whole streams only: all but the last chunk get a last block here.
        compressed_.assign(data.begin(), data.end());
        compressed_.insert(compressed_.end(), lastEmptyBlock.begin(), lastEmptyBlock.end());
        const size_t wanted = isLast ? data.size() : compressed_.size();
        constexpr size_t usualBytes = 300 * 1024;
        content.buffer.resize(std::max(content.buffer.size(), usualBytes));
        size_t taken = 0;
        libdeflate_result result = decompress(content, taken);
        if (result == LIBDEFLATE_INSUFFICIENT_SPACE && content.buffer.size() < mostContentBytes) {
            content.buffer.resize(mostContentBytes);
            result = decompress(content, taken);
        }
        if (result != LIBDEFLATE_SUCCESS || taken != wanted)
            content.count = 0;
    }

private:
    libdeflate_result decompress(Content& content, size_t& taken) const {
        if (!decompressor_)
            return LIBDEFLATE_BAD_DATA;
        return libdeflate_deflate_decompress_ex(decompressor_.get(),
                                                compressed_.data(),
                                                compressed_.size(),
                                                content.buffer.data(),
                                                content.buffer.size() - 1, // see PngStream::next
                                                &taken,
                                                &content.count);
    }

    std::unique_ptr<libdeflate_decompressor, DecompressorFreer> decompressor_{
        libdeflate_alloc_decompressor()};
    Bytes compressed_;
};

} // namespace

class PngStream::InflatedChunks {
public:
    explicit InflatedChunks(std::vector<Span> chunks)
        : chunks_(std::move(chunks)), contents_(chunks_.size()), isDone_(chunks_.size()) {
        spares_.reserve(mostSpareBuffers);
        try {
            helper_ = std::thread([this] {
                ChunkInflater inflater;
                do {
                    waitForReader();
                } while (inflateNext(inflater));
            });
        } catch (const std::exception&) {
            // The reader inflates them all.
        }
    }
    ~InflatedChunks() {
        next_ = chunks_.size();
        taken_ = chunks_.size();
        taken_.notify_one();
        if (helper_.joinable())
            helper_.join();
    }
    InflatedChunks(const InflatedChunks&) = delete;
    InflatedChunks& operator=(const InflatedChunks&) = delete;

    bool isComplete() const { return taken_ == chunks_.size() && !failed_; }

    Span next() {
        keepSpare(std::exchange(current_, {}));
        if (taken_ == chunks_.size() || failed_)
            return {};
        const size_t number = taken_++;
        taken_.notify_one();
        while (!isDone_[number].load(std::memory_order_acquire))
            if (!inflateNext(ownInflater_))
                isDone_[number].wait(false, std::memory_order_acquire);
        current_ = std::move(contents_[number]);
        const Span content = current_.all();
        checksum_ = libdeflate_adler32(checksum_, content.data(), content.size());
        failed_ = content.empty() || (taken_ == chunks_.size() && checksum_ != storedChecksum());
        return failed_ ? Span() : content;
    }

private:
    // The deflate data, without the zlib stream's header and checksum.
    Span dataOf(size_t number) const {
        Span data = chunks_[number];
        data = data.subspan(lengthAndTypeBytes, data.size() - frameBytes);
        if (number == 0)
            data = data.subspan(streamHeaderBytes);
        if (number + 1 == chunks_.size())
            data = data.first(data.size() - streamChecksumBytes);
        return data;
    }
    uint32_t storedChecksum() const {
        return bigEndian(chunks_.back().last(4 + streamChecksumBytes));
    }

    void waitForReader() const {
        size_t taken = taken_;
        while (next_ < chunks_.size() && next_ >= taken + mostAhead) {
            taken_.wait(taken);
            taken = taken_;
        }
    }

    Content takeSpare() {
        const std::lock_guard<std::mutex> lock(sparesMutex_);
        if (spares_.empty())
            return {};
        Content content = std::move(spares_.back());
        spares_.pop_back();
        return content;
    }
    void keepSpare(Content content) {
        const std::lock_guard<std::mutex> lock(sparesMutex_);
        if (!content.buffer.empty() && spares_.size() < spares_.capacity())
            spares_.push_back(std::move(content));
    }

    // Inflates the first chunk that no thread has begun; false when there is none.
    bool inflateNext(ChunkInflater& inflater) {
        const size_t number = next_.fetch_add(1);
        if (number >= chunks_.size())
            return false;
        Content& content = contents_[number];
        try {
            if (isChecksumRight(chunks_[number])) {
                content = takeSpare();
                inflater.inflate(dataOf(number), number + 1 == chunks_.size(), content);
            }
        } catch (const std::bad_alloc&) {
            content = {};
        }
        if (content.count == 0)
            next_ = chunks_.size(); // the reader stops here
        isDone_[number].store(true, std::memory_order_release);
        isDone_[number].notify_one();
        return true;
    }

    std::vector<Span> chunks_;
    std::vector<Content> contents_;
    std::vector<std::atomic<bool>> isDone_;
    std::atomic<size_t> next_{0};  // the first chunk that no thread has begun
    std::atomic<size_t> taken_{0}; // by the reader
    bool failed_ = false;
    uint32_t checksum_ = checksumOfNothing;
    Content current_;
    std::mutex sparesMutex_;
    std::vector<Content> spares_;
    ChunkInflater ownInflater_;
    std::thread helper_; // last: it uses the others
};

PngStream::PngStream(std::unique_ptr<InflatedChunks> chunks) : chunks_(std::move(chunks)) {}

PngStream::~PngStream() = default;

std::unique_ptr<PngStream> PngStream::open(std::span<const uint8_t> file) {
    std::vector<Span> chunks = dataChunks(file);
    if (!areWorthInflating(chunks))
        return nullptr;
    return std::unique_ptr<PngStream>(
        new PngStream(std::make_unique<InflatedChunks>(std::move(chunks))));
}

std::span<const uint8_t> PngStream::next() {
    return chunks_->next();
}

bool PngStream::isComplete() const {
    return chunks_->isComplete();
}

} // namespace paperline

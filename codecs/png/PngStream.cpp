#include "codecs/png/PngStream.h"

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
constexpr size_t chunkFrame = 12; // length, type and checksum
constexpr uint32_t checksumOfNothing = 1;
constexpr size_t streamHeaderBytes = 2;
constexpr size_t streamChecksumBytes = 4;
constexpr std::array<uint8_t, 5> lastEmptyBlock{1, 0, 0, 0xFF, 0xFF};
// Our writer puts 256 KB into a chunk, or a single row. Others' chunks may swell to anything.
constexpr size_t mostContentBytes = 4 * 1024 * 1024;
// Chunks that wait for the reader.
constexpr size_t mostAhead = 32;
// Memory of content that was read, waiting for other content.
constexpr size_t mostKept = 4;
// Below this a thread costs more than it saves.
constexpr size_t fewestCompressedBytes = 512 * 1024;

uint32_t bigEndian(Span bytes) {
    return uint32_t{bytes[0]} << 24U | uint32_t{bytes[1]} << 16U | uint32_t{bytes[2]} << 8U |
           uint32_t{bytes[3]};
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

// The IDAT chunks, when they stand one behind the other and nothing but the end follows. (What
// else may follow is another reader's to judge.)
std::vector<Span> pictureChunks(Span file) {
    std::vector<Span> chunks;
    if (file.size() < signatureBytes)
        return chunks;
    Span rest = file.subspan(signatureBytes);
    for (Span chunk = firstChunk(rest); !chunk.empty(); chunk = firstChunk(rest)) {
        if (hasType(chunk, "IDAT"))
            chunks.push_back(chunk);
        else if (!chunks.empty())
            return hasType(chunk, "IEND") && chunk.size() == chunkFrame ? chunks
                                                                        : std::vector<Span>();
        rest = rest.subspan(chunk.size());
    }
    return {};
}

// Deflate without a dictionary (RFC 1950, 2.2).
bool isStreamHeader(Span bytes) {
    return (bytes[0] & 0x0FU) == 8 && (bytes[1] & 0x20U) == 0 &&
           (unsigned{bytes[0]} << 8U | bytes[1]) % 31 == 0;
}

bool areWorthOpening(const std::vector<Span>& chunks) {
    if (chunks.size() < 2)
        return false;
    size_t sum = 0;
    for (const Span& chunk : chunks)
        sum += chunk.size();
    return sum >= fewestCompressedBytes && chunks.front().size() > chunkFrame + streamHeaderBytes &&
           chunks.back().size() > chunkFrame + streamChecksumBytes &&
           isStreamHeader(chunks.front().subspan(8));
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

// The bytes are kept for other content: fresh memory costs more than what it is filled with.
struct Content {
    Bytes bytes;
    size_t count = 0; // 0: damaged

    Span all() const { return Span(bytes).first(count); }
};

// Opens chunks; each thread has one of its own.
class ChunkOpener {
public:
    // No content when the data does not stand for itself.
    void open(Span data, bool isLast, Content& content) {
        compressed_.assign(data.begin(), data.end());
        compressed_.insert(compressed_.end(), lastEmptyBlock.begin(), lastEmptyBlock.end());
        const size_t wanted = isLast ? data.size() : compressed_.size();
        constexpr size_t usualBytes = 300 * 1024;
        content.bytes.resize(std::max(content.bytes.size(), usualBytes));
        size_t taken = 0;
        size_t given = 0;
        libdeflate_result result = decompress(content.bytes, taken, given);
        if (result == LIBDEFLATE_INSUFFICIENT_SPACE && content.bytes.size() < mostContentBytes) {
            content.bytes.resize(mostContentBytes);
            result = decompress(content.bytes, taken, given);
        }
        content.count = result == LIBDEFLATE_SUCCESS && taken == wanted ? given : 0;
    }

private:
    libdeflate_result decompress(Bytes& content, size_t& taken, size_t& given) const {
        if (!decompressor_)
            return LIBDEFLATE_BAD_DATA;
        return libdeflate_deflate_decompress_ex(decompressor_.get(),
                                                compressed_.data(),
                                                compressed_.size(),
                                                content.data(),
                                                content.size() - 1, // which may be read, too
                                                &taken,
                                                &given);
    }

    std::unique_ptr<libdeflate_decompressor, DecompressorFreer> decompressor_{
        libdeflate_alloc_decompressor()};
    Bytes compressed_;
};

} // namespace

class PngStream::OpenedChunks {
public:
    explicit OpenedChunks(std::vector<Span> chunks)
        : chunks_(std::move(chunks)), contents_(chunks_.size()), isOpen_(chunks_.size()) {
        kept_.reserve(mostKept);
        try {
            helper_ = std::thread([this] {
                ChunkOpener opener;
                do {
                    waitForReader();
                } while (openNext(opener));
            });
        } catch (const std::exception&) {
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

    Span next() {
        keepForOthers(std::exchange(current_, {}));
        if (taken_ == chunks_.size() || failed_)
            return {};
        const size_t number = taken_++;
        taken_.notify_one();
        while (!isOpen_[number].load(std::memory_order_acquire))
            if (!openNext(ownOpener_))
                isOpen_[number].wait(false, std::memory_order_acquire);
        current_ = std::move(contents_[number]);
        const Span content = current_.all();
        checksum_ = libdeflate_adler32(checksum_, content.data(), content.size());
        failed_ = content.empty() || (taken_ == chunks_.size() && checksum_ != storedChecksum());
        return failed_ ? Span() : content;
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

    Content takeKept() {
        const std::lock_guard<std::mutex> lock(keeping_);
        if (kept_.empty())
            return {};
        Content content = std::move(kept_.back());
        kept_.pop_back();
        return content;
    }
    void keepForOthers(Content content) {
        const std::lock_guard<std::mutex> lock(keeping_);
        if (!content.bytes.empty() && kept_.size() < kept_.capacity())
            kept_.push_back(std::move(content));
    }

    // False when all have been begun.
    bool openNext(ChunkOpener& opener) {
        const size_t number = next_.fetch_add(1);
        if (number >= chunks_.size())
            return false;
        Content& content = contents_[number];
        try {
            if (isChecksumRight(chunks_[number])) {
                content = takeKept();
                opener.open(dataOf(number), number + 1 == chunks_.size(), content);
            }
        } catch (const std::bad_alloc&) {
            content = {};
        }
        if (content.count == 0)
            next_ = chunks_.size(); // nobody will want the others
        isOpen_[number].store(true, std::memory_order_release);
        isOpen_[number].notify_one();
        return true;
    }

    std::vector<Span> chunks_;
    std::vector<Content> contents_;
    std::vector<std::atomic<bool>> isOpen_;
    std::atomic<size_t> next_{0};
    std::atomic<size_t> taken_{0};
    bool failed_ = false;
    uint32_t checksum_ = checksumOfNothing;
    Content current_;
    std::mutex keeping_;
    std::vector<Content> kept_;
    ChunkOpener ownOpener_;
    std::thread helper_; // last: it uses the others
};

PngStream::PngStream(std::unique_ptr<OpenedChunks> opened) : opened_(std::move(opened)) {}

PngStream::~PngStream() = default;

std::unique_ptr<PngStream> PngStream::open(std::span<const uint8_t> file) {
    std::vector<Span> chunks = pictureChunks(file);
    if (!areWorthOpening(chunks))
        return nullptr;
    return std::unique_ptr<PngStream>(
        new PngStream(std::make_unique<OpenedChunks>(std::move(chunks))));
}

std::span<const uint8_t> PngStream::next() {
    return opened_->next();
}

bool PngStream::isThrough() const {
    return opened_->isThrough();
}

} // namespace paperline

#include "codecs/png/PngWriter.h"

#include "codecs/pixels/PageLayout.h"
#include "codecs/png/PngDeflate.h"
#include "codecs/png/PngRows.h"
#include "platform/process/ParallelFor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <new>

#include <libdeflate.h>
#include <png.h>

// The rows are filtered and compressed here; the library writes header, density and the framing of
// the chunks. It jumps on errors: the functions that set the jump's target hold nothing with a
// destructor.

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

// The zlib stream's first bytes: deflate with a window of 32 KB, the fastest level.
constexpr std::array<uint8_t, 2> streamHeader{0x78, 0x01};
constexpr uint32_t checksumOfNothing = 1;

// Filtered bytes coded as one block: small enough for a processor's cache and for codes that follow
// the page's content, large enough for the codes' own size not to matter.
constexpr size_t blockBytes = 256 * 1024;

struct PackedRows {
    const BitmapImageRep& page;
    size_t rowBytes;   // without the bytes that pad the page's rows
    size_t pixelBytes; // 1 for 1-bit pages

    std::span<const uint8_t> row(int32_t y) const { return page.row(y).first(rowBytes); }
};

// A part of the compressed stream and the checksum of what it stands for.
struct Part {
    Bytes compressed;
    uint32_t checksum = checksumOfNothing;
    uint64_t filteredBytes = 0;
};

// The checksum (RFC 1950) of two stretches one behind the other.
uint32_t joinedChecksum(uint32_t first, uint32_t second, uint64_t secondBytes) {
    constexpr uint64_t prime = 65521;
    const uint64_t firstSum = first & 0xFFFFU;
    const uint64_t secondSum = second & 0xFFFFU;
    const uint64_t length = secondBytes % prime;
    const uint64_t low = (firstSum + secondSum + prime - 1) % prime;
    const uint64_t high =
        ((first >> 16U) + (second >> 16U) + length * (firstSum + prime - 1)) % prime;
    return static_cast<uint32_t>(high << 16U | low);
}

// Grey and colour: stretches of rows, each a block of its own, coded side by side.
class NoisyRows {
public:
    explicit NoisyRows(const PackedRows& rows)
        : rows_(rows), rowsAPart_(std::max<size_t>(1, blockBytes / (rows.rowBytes + 1))),
          partCount_((static_cast<size_t>(rows.page.pixelsHigh()) + rowsAPart_ - 1) / rowsAPart_) {}

    // Empty when the memory cannot be had.
    std::vector<Part> compress(unsigned threads) const {
        std::vector<Part> parts(partCount_);
        parallelFor(partCount_, threads, [&](size_t part, unsigned) {
            try {
                parts[part] = compressPart(part);
            } catch (const std::bad_alloc&) {
                parts[part] = {};
            }
        });
        const bool whole = std::none_of(
            parts.begin(), parts.end(), [](const Part& part) { return part.compressed.empty(); });
        return whole ? std::move(parts) : std::vector<Part>();
    }

private:
    Part compressPart(size_t number) const {
        const auto height = static_cast<size_t>(rows_.page.pixelsHigh());
        const size_t begin = number * rowsAPart_;
        const size_t end = std::min(height, begin + rowsAPart_);
        const size_t stride = rows_.rowBytes + 1;
        Bytes filtered((end - begin) * stride);
        PngRowFilter filter(rows_.rowBytes, rows_.pixelBytes);
        for (size_t y = begin; y < end; ++y) {
            const auto row = static_cast<int32_t>(y);
            filter.filter(rows_.row(row),
                          y > 0 ? rows_.row(row - 1) : std::span<const uint8_t>(),
                          &filtered[(y - begin) * stride]);
        }
        const bool isLast = number + 1 == partCount_;
        return {deflateBlock(filtered, isLast ? DeflatePlace::last : DeflatePlace::within),
                libdeflate_adler32(checksumOfNothing, filtered.data(), filtered.size()),
                filtered.size()};
    }

    const PackedRows& rows_;
    size_t rowsAPart_;
    size_t partCount_;
};

struct CompressorFree {
    void operator()(libdeflate_compressor* compressor) const noexcept {
        libdeflate_free_compressor(compressor);
    }
};

// Bits of text and line art repeat; a search for matches in unfiltered rows finds most of it.
Bytes compressBilevel(const PackedRows& rows) {
    constexpr int level = 8;
    const std::unique_ptr<libdeflate_compressor, CompressorFree> compressor(
        libdeflate_alloc_compressor(level));
    if (!compressor)
        return {};
    const auto height = static_cast<size_t>(rows.page.pixelsHigh());
    const size_t stride = rows.rowBytes + 1; // the filter's number, 0, and the row
    const unsigned usedBits = (static_cast<unsigned>(rows.page.pixelsWide()) + 7) % 8 + 1;
    const auto lastByteMask = static_cast<uint8_t>(0xFF00U >> usedBits);
    Bytes plain(height * stride);
    for (size_t y = 0; y < height; ++y) {
        const std::span<const uint8_t> row = rows.row(static_cast<int32_t>(y));
        std::copy(row.begin(), row.end(), &plain[y * stride + 1]);
        plain[y * stride + rows.rowBytes] &= lastByteMask;
    }
    Bytes stream(libdeflate_zlib_compress_bound(compressor.get(), plain.size()));
    stream.resize(libdeflate_zlib_compress(
        compressor.get(), plain.data(), plain.size(), stream.data(), stream.size()));
    return stream;
}

uint32_t pixelsPerMetre(double dpi) {
    return static_cast<uint32_t>(std::lround(std::clamp(dpi, 0.1, 1e6) / 0.0254));
}

// Frames chunks into a vector with the library.
class PngFile {
public:
    PngFile() {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, jumpOut, sayNothing);
        if (png_ != nullptr)
            info_ = png_create_info_struct(png_);
    }
    ~PngFile() {
        if (png_ != nullptr)
            png_destroy_write_struct(&png_, &info_);
    }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    bool begin(const BitmapImageRep& page, const PngOptions& options) {
        if (info_ == nullptr || setjmp(png_jmpbuf(png_)) != 0)
            return false;
        png_set_write_fn(png_, &bytes_, appendBytes, nullptr);
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(png_,
                     info_,
                     static_cast<png_uint_32>(page.pixelsWide()),
                     static_cast<png_uint_32>(page.pixelsHigh()),
                     page.bitsPerSample(),
                     page.samplesPerPixel() == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                     PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_set_pHYs(png_,
                     info_,
                     pixelsPerMetre(options.horizontalDpi),
                     pixelsPerMetre(options.verticalDpi),
                     PNG_RESOLUTION_METER);
        png_write_info(png_, info_);
        return true;
    }

    bool addChunk(const char* type, std::span<const uint8_t> content) {
        if (setjmp(png_jmpbuf(png_)) != 0)
            return false;
        png_write_chunk(
            png_, reinterpret_cast<png_const_bytep>(type), content.data(), content.size());
        return true;
    }

    Bytes takeBytes() { return std::move(bytes_); }
    bool reserve(size_t count) {
        try {
            bytes_.reserve(count);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

private:
    [[noreturn]] static void jumpOut(png_structp png, png_const_charp /*message*/) {
        png_longjmp(png, 1);
    }
    static void sayNothing(png_structp /*png*/, png_const_charp /*message*/) {}

    static bool append(Bytes& to, const uint8_t* bytes, size_t count) {
        try {
            to.insert(to.end(), bytes, bytes + count);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
    static void appendBytes(png_structp png, png_bytep bytes, size_t count) {
        if (!append(*static_cast<Bytes*>(png_get_io_ptr(png)), bytes, count))
            png_error(png, "no memory");
    }

    Bytes bytes_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

// Chunks hold less than 2^31 bytes; larger streams go on in the next one.
bool addData(PngFile& file, std::span<const uint8_t> stream) {
    constexpr size_t most = 1U << 30U;
    while (stream.size() > most) {
        if (!file.addChunk("IDAT", stream.first(most)))
            return false;
        stream = stream.subspan(most);
    }
    return file.addChunk("IDAT", stream);
}

bool addParts(PngFile& file, std::vector<Part>& parts) {
    if (parts.empty())
        return false;
    uint32_t checksum = checksumOfNothing;
    size_t total = 0;
    for (const Part& part : parts) {
        checksum = joinedChecksum(checksum, part.checksum, part.filteredBytes);
        total += part.compressed.size() + 12; // length, type and checksum of the chunk
    }
    Bytes& first = parts.front().compressed;
    first.insert(first.begin(), streamHeader.begin(), streamHeader.end());
    for (unsigned shift = 32; shift > 0; shift -= 8)
        parts.back().compressed.push_back(static_cast<uint8_t>(checksum >> (shift - 8)));
    constexpr size_t otherChunks = 128;
    return file.reserve(total + otherChunks) &&
           std::all_of(parts.begin(), parts.end(), [&file](const Part& part) {
               return addData(file, part.compressed);
           });
}

bool addPicture(PngFile& file, const PackedRows& rows, unsigned threads) {
    if (rows.page.bitsPerPixel() == 1) {
        const Bytes stream = compressBilevel(rows);
        return !stream.empty() && addData(file, stream);
    }
    std::vector<Part> parts = NoisyRows(rows).compress(threads);
    return addParts(file, parts);
}

} // namespace

std::optional<std::vector<uint8_t>> encodePng(const BitmapImageRep& page,
                                              const PngOptions& options) {
    if (!hasPageLayout(page))
        return std::nullopt;
    const int bits = page.bitsPerPixel();
    const size_t rowBytes =
        (static_cast<size_t>(page.pixelsWide()) * static_cast<size_t>(bits) + 7) / 8;
    const PackedRows rows{page, rowBytes, bits == 24 ? 3U : 1U};
    try {
        PngFile file;
        const unsigned threads = options.threads == 0 ? processorCount() : options.threads;
        if (!file.begin(page, options) || !addPicture(file, rows, threads) ||
            !file.addChunk("IEND", {}))
            return std::nullopt;
        return file.takeBytes();
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace paperline

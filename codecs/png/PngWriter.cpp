#include "codecs/png/PngWriter.h"

#include "codecs/png/PngDeflate.h"
#include "codecs/png/PngErrors.h"
#include "codecs/png/PngRows.h"
#include "platform/files/ByteOrder.h"
#include "platform/process/ParallelFor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <memory>
#include <new>

#include <libdeflate.h>
#include <zlib.h>

// Rows are filtered and compressed here; the library writes the header, the density and the chunk
// frames. It reports errors by longjmp: a function that calls setjmp has no locals with a
// destructor.

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

// The zlib stream's first bytes: deflate with a window of 32 KB, the fastest level.
constexpr std::array<uint8_t, 2> streamHeader{0x78, 0x01};
constexpr uint32_t checksumOfNothing = 1;

// Filtered bytes in one chunk, which is one deflate block: few enough for the processor's cache and
// for codes that follow the page's content, enough for the codes' own size not to matter.
constexpr size_t chunkBytes = 256 * 1024;

struct Part {
    Bytes compressed;
    uint32_t checksum = checksumOfNothing; // of the filtered bytes
    size_t filteredBytes = 0;
};

Part compressRows(const BitmapImageRep& page, size_t begin, size_t end) {
    const size_t stride = page.packedRowBytes() + 1; // the filter's number in front
    Bytes filtered((end - begin) * stride);
    PngRowFilter filter(page.packedRowBytes(), static_cast<size_t>(page.samplesPerPixel()));
    for (size_t y = begin; y < end; ++y) {
        const auto row = static_cast<int32_t>(y);
        filter.filter(page.packedRow(row),
                      y > 0 ? page.packedRow(row - 1) : std::span<const uint8_t>(),
                      &filtered[(y - begin) * stride]);
    }
    const bool isLast = end == static_cast<size_t>(page.pixelsHigh());
    return {deflateBlock(filtered, isLast ? DeflatePlace::last : DeflatePlace::within),
            libdeflate_adler32(checksumOfNothing, filtered.data(), filtered.size()),
            filtered.size()};
}

// Grey and colour: parts of whole rows, compressed in parallel. Empty when memory runs out.
std::vector<Part> compressParts(const BitmapImageRep& page, unsigned threads) {
    const auto height = static_cast<size_t>(page.pixelsHigh());
    const size_t rowsOfPart = std::max<size_t>(1, chunkBytes / (page.packedRowBytes() + 1));
    std::vector<Part> parts((height + rowsOfPart - 1) / rowsOfPart);
    const bool isWhole = parallelForAll(parts.size(), threads, [&](size_t part, unsigned) {
        const size_t begin = part * rowsOfPart;
        parts[part] = compressRows(page, begin, std::min(height, begin + rowsOfPart));
        return true;
    });
    return isWhole ? std::move(parts) : std::vector<Part>();
}

struct CompressorFree {
    void operator()(libdeflate_compressor* compressor) const noexcept {
        libdeflate_free_compressor(compressor);
    }
};

// Text and line art repeat: the unfiltered rows, searched for matches. Empty when memory runs out.
Bytes compressBilevel(const BitmapImageRep& page) {
    constexpr int level = 8;
    const std::unique_ptr<libdeflate_compressor, CompressorFree> compressor(
        libdeflate_alloc_compressor(level));
    if (!compressor)
        return {};
    const auto height = static_cast<size_t>(page.pixelsHigh());
    const size_t stride = page.packedRowBytes() + 1; // the filter's number, 0, in front
    Bytes plain(height * stride);
    for (size_t y = 0; y < height; ++y)
        page.copyPackedRow(static_cast<int32_t>(y), std::span(plain).subspan(y * stride + 1));
    Bytes stream(libdeflate_zlib_compress_bound(compressor.get(), plain.size()));
    stream.resize(libdeflate_zlib_compress(
        compressor.get(), plain.data(), plain.size(), stream.data(), stream.size()));
    return stream;
}

uint32_t pixelsPerMetre(double dpi) {
    return static_cast<uint32_t>(std::lround(std::clamp(dpi, 0.1, 1e6) / 0.0254));
}

// Writes chunks to a vector.
class PngFile {
public:
    PngFile() {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leavePng, ignorePngWarning);
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

    // Throws std::bad_alloc.
    void reserve(size_t count) { bytes_.reserve(count); }
    Bytes takeBytes() { return std::move(bytes_); }

private:
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
            png_error(png, "out of memory");
    }

    Bytes bytes_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

// A chunk holds less than 2^31 bytes; a longer stream continues in the next one.
bool addData(PngFile& file, std::span<const uint8_t> stream) {
    constexpr size_t most = 1U << 30U;
    while (stream.size() > most) {
        if (!file.addChunk("IDAT", stream.first(most)))
            return false;
        stream = stream.subspan(most);
    }
    return file.addChunk("IDAT", stream);
}

bool addParts(PngFile& file, std::vector<Part> parts) {
    if (parts.empty())
        return false;
    uLong checksum = checksumOfNothing;
    size_t total = 128; // the other chunks
    for (const Part& part : parts) {
        checksum =
            adler32_combine(checksum, part.checksum, static_cast<z_off_t>(part.filteredBytes));
        total += part.compressed.size() + 12; // length, type and checksum of the chunk
    }
    Bytes& first = parts.front().compressed;
    first.insert(first.begin(), streamHeader.begin(), streamHeader.end());
    Bytes& last = parts.back().compressed;
    last.resize(last.size() + 4);
    writeInteger(std::span(last).last(4), std::endian::big, static_cast<uint32_t>(checksum));
    file.reserve(total);
    return std::all_of(parts.begin(), parts.end(), [&file](const Part& part) {
        return addData(file, part.compressed);
    });
}

bool addPicture(PngFile& file, const BitmapImageRep& page, unsigned threads) {
    if (page.bitsPerPixel() != 1)
        return addParts(file, compressParts(page, threads));
    const Bytes stream = compressBilevel(page);
    return !stream.empty() && addData(file, stream);
}

} // namespace

std::optional<std::vector<uint8_t>> encodePng(const BitmapImageRep& page,
                                              const PngOptions& options) {
    if (!hasPageLayout(page))
        return std::nullopt;
    try {
        PngFile file;
        const unsigned threads = options.threads == 0 ? processorCount() : options.threads;
        if (!file.begin(page, options) || !addPicture(file, page, threads) ||
            !file.addChunk("IEND", {}))
            return std::nullopt;
        return file.takeBytes();
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace paperline

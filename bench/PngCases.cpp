// PNG against pnmtopng at its default, and against libpng at its fastest settings.
#include "bench/EncoderComparison.h"
#include "output/PageCodecs.h"

#include <csetjmp>

#include <png.h>
#include <zlib.h>

namespace paperline::bench {

namespace {

using Bytes = std::vector<uint8_t>;

struct PngLimits {
    double time, size;
};

EncoderComparison
comparison(PageKind kind, int dpi, const std::string& work, const PngLimits& limits) {
    EncoderComparison result = comparisonOf(work, kind, dpi, pageCodecs().png);
    result.toolName = "pnmtopng";
    result.tool = [](const std::string& input, const std::string& /*output*/) {
        return ToolCommand{{"pnmtopng", input}, true};
    };
    result.target.time = limits.time;
    result.target.size = limits.size;
    if (kind != PageKind::bilevel)
        result.mostRounds = 1;
    if (dpi > 300)
        result.mostPages = 2;
    return result;
}

struct LibraryMode {
    const char* name;
    int level;
    int strategy;
};
constexpr LibraryMode libraryModes[] = {{"level 1", 1, Z_FILTERED},
                                        {"level 1, Z_RLE", 1, Z_RLE},
                                        {"Z_HUFFMAN_ONLY", 1, Z_HUFFMAN_ONLY}};

void appendBytes(png_structp png, png_bytep bytes, size_t count) {
    auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}

// The function that calls setjmp has no locals with a destructor.
bool writeByLibrary(png_structp png,
                    png_infop info,
                    const BitmapImageRep& page,
                    const LibraryMode& mode) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_set_IHDR(png,
                 info,
                 static_cast<png_uint_32>(page.pixelsWide()),
                 static_cast<png_uint_32>(page.pixelsHigh()),
                 page.bitsPerSample(),
                 page.samplesPerPixel() == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                 PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_AVG | PNG_FILTER_PAETH); // as ours
    png_set_compression_level(png, mode.level);
    png_set_compression_strategy(png, mode.strategy);
    png_write_info(png, info);
    for (int32_t y = 0; y < page.pixelsHigh(); ++y)
        png_write_row(png, page.row(y).data());
    png_write_end(png, info);
    return true;
}

std::optional<Bytes> encodeByLibrary(const BitmapImageRep& page, const LibraryMode& mode) {
    Bytes file;
    file.reserve(page.bitmapData().size() / 2);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (info != nullptr)
        png_set_write_fn(png, &file, appendBytes, nullptr);
    const bool isWritten = info != nullptr && writeByLibrary(png, info, page, mode);
    png_destroy_write_struct(&png, &info);
    return isWritten ? std::optional(std::move(file)) : std::nullopt;
}

EncoderComparison
libraryComparison(PageKind kind, const std::string& work, const LibraryMode& mode) {
    EncoderComparison result = comparisonOf(work, kind, 300, pageCodecs().png);
    result.toolName = std::string("libpng in process, ") + mode.name;
    result.library = [mode](const BitmapImageRep& page) { return encodeByLibrary(page, mode); };
    return result;
}

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    constexpr PngLimits shades{1.0 / 12, 1.05};
    constexpr PngLimits bits{1 / 3.5, 1.0};
    std::vector<EncoderComparison> comparisons{
        comparison(PageKind::colour, 300, "PNG, colour", shades),
        comparison(PageKind::colour, 600, "PNG, colour 600 dpi", shades),
        comparison(PageKind::grey, 300, "PNG, grey", shades),
        comparison(PageKind::bilevel, 300, "PNG, bilevel", bits)};
    for (const LibraryMode& mode : libraryModes)
        comparisons.push_back(libraryComparison(PageKind::colour, "PNG, colour", mode));
    for (const LibraryMode& mode : libraryModes)
        comparisons.push_back(libraryComparison(PageKind::grey, "PNG, grey", mode));
    return compareEncoders(comparisons, pages, options);
}

} // namespace

std::vector<BenchCase> pngCases() {
    return {{"png", run}};
}

} // namespace paperline::bench

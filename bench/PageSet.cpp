#include "bench/PageSet.h"

#include "bench/SheetScan.h"
#include "codecs/pictures/PictureReader.h"
#include "codecs/pixels/DecodedImage.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include <stdlib.h>

namespace paperline::bench {

namespace {

struct KindOfPage {
    int bitsPerPixel;
    const char* magic;
    const char* name;
    const char* extension;
};

// In the order of PageKind.
constexpr std::array<KindOfPage, 3> kinds{
    {{24, "P6", "colour", ".ppm"}, {8, "P5", "grey", ".pgm"}, {1, "P4", "bilevel", ".pbm"}}};

[[noreturn]] void giveUp(const std::string& what) {
    std::fprintf(stderr, "paperline_bench: %s\n", what.c_str());
    std::exit(1);
}

std::vector<uint8_t> pnmOf(const BitmapImageRep& page, const KindOfPage& kind) {
    std::string header = std::string(kind.magic) + "\n" + std::to_string(page.pixelsWide()) + " " +
                         std::to_string(page.pixelsHigh()) + "\n";
    if (kind.bitsPerPixel > 1)
        header += "255\n";
    std::vector<uint8_t> bytes(header.begin(), header.end());
    const size_t start = bytes.size();
    const std::span<const uint8_t> pixels = page.bitmapData();
    bytes.insert(bytes.end(), pixels.begin(), pixels.end());
    if (kind.bitsPerPixel == 1) // 1 is black there
        for (size_t at = start; at < bytes.size(); ++at)
            bytes[at] = static_cast<uint8_t>(~bytes[at]);
    return bytes;
}

} // namespace

PageSet::PageSet(const std::string& keptFolder, Size size)
    : folder_(keptFolder), isKept_(!keptFolder.empty()), isSmall_(size == Size::small) {
    if (isKept_)
        return;
    std::error_code error;
    const auto temporary = std::filesystem::temp_directory_path(error);
    std::string pattern = (temporary / "paperline-bench-XXXXXX").string();
    if (error || mkdtemp(pattern.data()) == nullptr)
        giveUp("there is no temporary folder");
    folder_ = pattern;
}

PageSet::~PageSet() {
    if (isKept_)
        return;
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

BenchPage PageSet::page(PageKind kind, int askedDpi, int number) const {
    const int dpi = isSmall_ ? askedDpi / 3 : askedDpi;
    const KindOfPage& wanted = kinds[static_cast<size_t>(kind)];
    BenchPage result;
    result.pnmFile = folder_ + "/" + wanted.name + "-" + std::to_string(dpi) + "-" +
                     std::to_string(number) + wanted.extension;
    if (!fileExists(result.pnmFile))
        draw(kind, dpi, number, result.pnmFile);
    constexpr uint64_t mostPixels = uint64_t{1} << 30;
    const std::optional<DecodedImage> kept = readPicture(result.pnmFile, 0, mostPixels);
    if (!kept)
        giveUp(result.pnmFile + " cannot be read back");
    result.pixels = kept->image;
    result.pixels->setSize(
        {result.pixels->pixelsWide() * 72.0 / dpi, result.pixels->pixelsHigh() * 72.0 / dpi});
    return result;
}

void PageSet::draw(PageKind kind, int dpi, int number, const std::string& file) const {
    const KindOfPage& wanted = kinds[static_cast<size_t>(kind)];
    const auto seed = static_cast<uint64_t>(number) * 1000 + static_cast<uint64_t>(dpi);
    const std::shared_ptr<BitmapImageRep> drawn =
        scanSheet(layOutSheet(number, dpi), dpi, wanted.bitsPerPixel, seed);
    if (drawn == nullptr)
        giveUp("there is no memory for a page");
    if (!writeFile(file, pnmOf(*drawn, wanted)))
        giveUp("there is no room for " + file);
}

} // namespace paperline::bench

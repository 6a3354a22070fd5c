#include "sources/software/PictureStack.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"

#include <algorithm>
#include <span>

namespace paperline::sources {

namespace {

constexpr uint64_t maximumPixels = uint64_t{1} << 30;

void convertRow(const BitmapImageRep& image, int32_t y, int bitsPerPixel, std::span<uint8_t> out) {
    const auto row = image.row(y);
    const auto width = static_cast<size_t>(image.pixelsWide());
    if (bitsPerPixel == 24) {
        rowToColour(row, image.bitsPerPixel(), out);
    } else if (bitsPerPixel == 8) {
        rowToGrey(row, image.bitsPerPixel(), out);
    } else {
        std::vector<uint8_t> grey(width);
        rowToGrey(row, image.bitsPerPixel(), grey);
        packBlackAndWhite(grey, out);
    }
}

} // namespace

std::optional<PictureStack> PictureStack::load(const std::string& folder) {
    if (!folderExists(folder))
        return std::nullopt;
    std::vector<std::string> names = folderEntries(folder);
    std::sort(names.begin(), names.end());
    PictureStack stack;
    for (const std::string& name : names) {
        const std::string path = appendPathComponent(folder, name);
        const int count = folderExists(path) ? 0 : picturePageCount(path);
        for (int index = 0; index < count; ++index)
            stack.pages_.push_back({path, index});
    }
    return stack;
}

ScanStatus PictureStack::deliver(size_t index, PageFormat format, PageSink& sink) const {
    const Page& page = pages_[index];
    const auto picture = readPicture(page.path, page.index, maximumPixels);
    if (!picture || !picture->image)
        return ScanStatus::ioError;
    const BitmapImageRep& image = *picture->image;
    format.widthPixels = image.pixelsWide();
    format.heightPixels = image.pixelsHigh();
    if (!sink.begin(format))
        return ScanStatus::noMemory;
    for (int32_t y = 0; y < format.heightPixels; ++y) {
        const auto row = sink.rows(y, 1);
        if (row.empty())
            return ScanStatus::noMemory;
        convertRow(image, y, format.bitsPerPixel, row);
    }
    sink.finish(format.heightPixels);
    return ScanStatus::good;
}

} // namespace paperline::sources

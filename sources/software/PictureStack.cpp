#include "sources/software/PictureStack.h"

#include "codecs/pictures/PictureReader.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "sources/software/PixelPacking.h"

#include <algorithm>

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

std::shared_ptr<BitmapImageRep> PictureStack::read(size_t index) const {
    const Page& page = pages_[index];
    const auto picture = readPicture(page.path, page.index, maximumPixels);
    return picture ? picture->image : nullptr;
}

void convertRows(const BitmapImageRep& picture,
                 int32_t firstRow,
                 int bitsPerPixel,
                 std::span<uint8_t> rows) {
    const auto width = static_cast<size_t>(picture.pixelsWide());
    const size_t rowBytes = (width * static_cast<size_t>(bitsPerPixel) + 7) / 8;
    for (int32_t y = firstRow; !rows.empty(); ++y, rows = rows.subspan(rowBytes))
        convertRow(picture, y, bitsPerPixel, rows.first(rowBytes));
}

} // namespace paperline::sources

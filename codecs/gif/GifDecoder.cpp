#include "codecs/gif/GifDecoder.h"

#include "codecs/gif/LzwDecoder.h"
#include "codecs/pixels/DecodedImage.h"

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include <gif_lib.h>

namespace paperline {
namespace {

constexpr PaletteColour white{255, 255, 255};
// Some readers lose rows of images without a row in the second pass.
constexpr int32_t fewestInterlacedRows = 5;

struct GifCloser {
    void operator()(GifFileType* gif) const noexcept { DGifCloseFile(gif, nullptr); }
};
using GifHandle = std::unique_ptr<GifFileType, GifCloser>;

int readBytes(GifFileType* gif, GifByteType* target, int count) {
    auto& rest = *static_cast<std::span<const uint8_t>*>(gif->UserData);
    const size_t taken = std::min(static_cast<size_t>(std::max(count, 0)), rest.size());
    std::copy_n(rest.begin(), taken, target);
    rest = rest.subspan(taken);
    return static_cast<int>(taken);
}

// Sets the transparent index if the extension is a graphics control block. False when it is
// damaged.
bool readExtension(GifFileType& gif, int& transparent) {
    int kind = 0;
    GifByteType* block = nullptr; // its length first
    if (DGifGetExtension(&gif, &kind, &block) != GIF_OK)
        return false;
    if (kind == GRAPHICS_EXT_FUNC_CODE) {
        GraphicsControlBlock control{};
        if (block == nullptr || DGifExtensionToGCB(block[0], block + 1, &control) != GIF_OK)
            return false;
        transparent = control.TransparentColor;
    }
    while (block != nullptr)
        if (DGifGetExtensionNext(&gif, &block) != GIF_OK)
            return false;
    return true;
}

// Skips to the first image.
bool findImage(GifFileType& gif, int& transparent) {
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    while (DGifGetRecordType(&gif, &record) == GIF_OK) {
        if (record == IMAGE_DESC_RECORD_TYPE)
            return DGifGetImageDesc(&gif) == GIF_OK;
        if (record != EXTENSION_RECORD_TYPE || !readExtension(gif, transparent))
            return false;
    }
    return false;
}

// Along one axis. Some readers refuse a screen more than ten times as long as its image.
bool fits(int32_t start, int32_t length, int32_t screen) {
    constexpr int32_t alwaysAccepted = 200;
    return start >= 0 && length > 0 && length <= screen && start <= screen - length &&
           screen / 10 <= std::max(length, alwaysAccepted);
}

// The codes of all blocks, then the spare bytes; empty when the file ends early.
std::vector<uint8_t> readCodes(GifFileType& gif, int& literalBits, size_t mostBytes) {
    std::vector<uint8_t> codes;
    codes.reserve(mostBytes);
    GifByteType* block = nullptr; // its length first
    if (DGifGetCode(&gif, &literalBits, &block) != GIF_OK)
        return {};
    while (block != nullptr) {
        codes.insert(codes.end(), block + 1, block + 1 + block[0]);
        if (DGifGetCodeNext(&gif, &block) != GIF_OK)
            return {};
    }
    codes.resize(codes.size() + lzwSpareBytes);
    return codes;
}

PaletteColour colourOf(const GifColorType& colour) {
    return {colour.Red, colour.Green, colour.Blue};
}

void setColours(const GifFileType& gif, int transparent, GifPicture& picture) {
    const bool hasOwnPalette = gif.Image.ColorMap != nullptr;
    const ColorMapObject& map = hasOwnPalette ? *gif.Image.ColorMap : *gif.SColorMap;
    picture.colours.fill(white);
    const auto count = std::min(static_cast<size_t>(map.ColorCount), picture.colours.size());
    std::transform(map.Colors, map.Colors + count, picture.colours.begin(), colourOf);
    if (transparent != NO_TRANSPARENT_COLOR) {
        picture.colours[static_cast<size_t>(transparent)] = white;
        picture.behind = white;
    } else if (gif.SColorMap != nullptr) {
        const bool isColour = gif.SBackGroundColor < gif.SColorMap->ColorCount;
        picture.behind = isColour ? colourOf(gif.SColorMap->Colors[gif.SBackGroundColor]) : white;
    }
}

// Whether all readers agree on the image.
bool isUnambiguous(const GifFileType& gif) {
    const GifImageDesc& frame = gif.Image;
    return (frame.ColorMap != nullptr || gif.SColorMap != nullptr) &&
           (!frame.Interlace || frame.Height >= fewestInterlacedRows) &&
           fits(frame.Left, frame.Width, gif.SWidth) && fits(frame.Top, frame.Height, gif.SHeight);
}

PixelSize screenSize(const GifFileType& gif) {
    return {static_cast<uint32_t>(gif.SWidth), static_cast<uint32_t>(gif.SHeight)};
}

std::optional<GifPicture> decode(std::span<const uint8_t> file, uint64_t maximumPixels) {
    const size_t fileBytes = file.size();
    const GifHandle gif(DGifOpen(&file, readBytes, nullptr));
    int transparent = NO_TRANSPARENT_COLOR;
    if (!gif || !isWithin(screenSize(*gif), maximumPixels) || !findImage(*gif, transparent) ||
        !isUnambiguous(*gif))
        return std::nullopt;
    const GifImageDesc& frame = gif->Image;
    GifPicture picture;
    picture.screenWidth = gif->SWidth;
    picture.screenHeight = gif->SHeight;
    picture.left = frame.Left;
    picture.top = frame.Top;
    picture.width = frame.Width;
    picture.height = frame.Height;
    picture.isInterlaced = frame.Interlace;
    setColours(*gif, transparent, picture);
    int literalBits = 0;
    const std::vector<uint8_t> codes = readCodes(*gif, literalBits, fileBytes);
    picture.memory =
        expandLzw(codes,
                  static_cast<unsigned>(literalBits),
                  static_cast<size_t>(frame.Width) * static_cast<size_t>(frame.Height));
    return picture.memory ? std::optional(std::move(picture)) : std::nullopt;
}

// The position of row `y` in an interlaced image: rows 0, 8, 16... come first, then 4, 12..., then
// 2, 6..., then the odd ones.
int32_t storedRow(int32_t y, int32_t height) {
    const int32_t eighths = (height + 7) / 8;
    const int32_t quarters = eighths + (height + 3) / 8;
    if (y % 8 == 0)
        return y / 8;
    if (y % 8 == 4)
        return eighths + y / 8;
    if (y % 4 == 2)
        return quarters + y / 4;
    return quarters + (height + 1) / 4 + y / 2;
}

} // namespace

bool GifPicture::isGrey() const {
    return std::all_of(colours.begin(), colours.end(), [](const PaletteColour& colour) {
        return colour.red == colour.green && colour.green == colour.blue;
    });
}

std::span<const uint8_t> GifPicture::row(int32_t y) const {
    const auto rowBytes = static_cast<size_t>(width);
    const auto stored = static_cast<size_t>(isInterlaced ? storedRow(y, height) : y);
    return {memory.get() + lzwFirstPixel + stored * rowBytes, rowBytes};
}

std::optional<GifPicture> decodeGif(std::span<const uint8_t> file, uint64_t maximumPixels) {
    try {
        return decode(file, maximumPixels);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace paperline

#include "codecs/gif/GifCodec.h"

#include "codecs/gif/GifRows.h"

#include <memory>
#include <new>

#include <gif_lib.h>

namespace paperline {
namespace {

constexpr int32_t maximumSide = 65535;

int appendBytes(GifFileType* gif, const GifByteType* bytes, int count) {
    auto& file = *static_cast<std::vector<uint8_t>*>(gif->UserData);
    try {
        file.insert(file.end(), bytes, bytes + count);
        return count;
    } catch (const std::bad_alloc&) {
        return 0; // a failed write for the library
    }
}

struct GifCloser {
    void operator()(GifFileType* gif) const noexcept { EGifCloseFile(gif, nullptr); }
};
using GifHandle = std::unique_ptr<GifFileType, GifCloser>;

struct ColourMapFreer {
    void operator()(ColorMapObject* map) const noexcept { GifFreeMapObject(map); }
};
using ColourMapHandle = std::unique_ptr<ColorMapObject, ColourMapFreer>;

// The number of colours is a power of two, at least 2; unused ones are black.
ColourMapHandle makeColourMap(const Palette& palette) {
    int count = 2;
    while (static_cast<size_t>(count) < palette.size())
        count *= 2;
    ColourMapHandle map(GifMakeMapObject(count, nullptr));
    for (size_t index = 0; map && index < palette.size(); ++index)
        map->Colors[index] = {palette[index].red, palette[index].green, palette[index].blue};
    return map;
}

bool putHeader(GifFileType& gif, const BitmapImageRep& page, ColorMapObject& map) {
    EGifSetGifVersion(&gif, false); // 87a
    return EGifPutScreenDesc(
               &gif, page.pixelsWide(), page.pixelsHigh(), map.BitsPerPixel, 0, &map) == GIF_OK &&
           EGifPutImageDesc(&gif, 0, 0, page.pixelsWide(), page.pixelsHigh(), false, nullptr) ==
               GIF_OK;
}

bool putRows(GifFileType& gif, GifRows& rows, const BitmapImageRep& page) {
    for (int32_t y = 0; y < page.pixelsHigh(); ++y) {
        const std::span<uint8_t> row = rows.row(y);
        if (EGifPutLine(&gif, row.data(), page.pixelsWide()) != GIF_OK)
            return false;
    }
    return true;
}

bool isEncodable(const BitmapImageRep& page) {
    return page.pixelsWide() <= maximumSide && page.pixelsHigh() <= maximumSide &&
           hasPageLayout(page);
}

std::optional<std::vector<uint8_t>> encode(const BitmapImageRep& page) {
    const std::unique_ptr<GifRows> rows = makeGifRows(page);
    const ColourMapHandle map = makeColourMap(rows->palette());
    std::vector<uint8_t> file;
    file.reserve(page.bitmapData().size() / 4 + 1024);
    GifHandle gif(EGifOpen(&file, appendBytes, nullptr));
    if (!gif || !map || !putHeader(*gif, page, *map) || !putRows(*gif, *rows, page))
        return std::nullopt;
    if (EGifCloseFile(gif.release(), nullptr) != GIF_OK)
        return std::nullopt;
    return file;
}

} // namespace

std::optional<std::vector<uint8_t>> encodeGif(const BitmapImageRep& page) {
    if (!isEncodable(page))
        return std::nullopt;
    try {
        return encode(page);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace paperline

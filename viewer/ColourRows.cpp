#include "viewer/ColourRows.h"

#include "platform/PageMemory.h"

#include <new>

namespace paperline {

QImage newColourImage(int widthPixels, int heightPixels) {
    constexpr qsizetype bytesPerPixel = 4;
    if (widthPixels <= 0 || heightPixels <= 0)
        return {};
    const qsizetype rowBytes = widthPixels * bytesPerPixel;
    // Large memory comes in few pieces: fresh pages of 4 KiB cost more than the conversion.
    auto* memory = new (std::nothrow)
        PageMemory(allocatePageMemory(static_cast<size_t>(rowBytes * heightPixels)));
    if (memory == nullptr || !*memory) {
        delete memory;
        return {};
    }
    return {memory->get(),
            widthPixels,
            heightPixels,
            rowBytes,
            QImage::Format_RGB32,
            [](void* owned) { delete static_cast<PageMemory*>(owned); },
            memory};
}

void putColourRow(std::span<const uint8_t> bytes, ColourOrder order, std::span<QRgb> pixels) {
    const size_t red = order == ColourOrder::redFirst ? 0 : 2;
    const uint8_t* from = bytes.data();
    for (QRgb& pixel : pixels) {
        pixel = 0xFF000000U | QRgb{from[red]} << 16 | QRgb{from[1]} << 8 | from[2 - red];
        from += 3;
    }
}

} // namespace paperline

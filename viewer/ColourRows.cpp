#include "viewer/ColourRows.h"

#include "codecs/pixels/PageMemory.h"
#include "platform/process/ParallelFor.h"

#include <algorithm>
#include <new>

namespace paperline {

QImage newColourImage(int widthPixels, int heightPixels) {
    constexpr qsizetype bytesPerPixel = 4;
    if (widthPixels <= 0 || heightPixels <= 0)
        return {};
    const qsizetype rowBytes = widthPixels * bytesPerPixel;
    // Page memory has few page faults; those of fresh memory cost more than the conversion.
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
    if (pixels.empty())
        return;
    const uint8_t* from = bytes.data();
    const auto last = pixels.end() - 1;
    // Reading four bytes is one memory access. After the last pixel there is no fourth.
    if (order == ColourOrder::redFirst)
        for (auto pixel = pixels.begin(); pixel != last; ++pixel, from += 3)
            *pixel = 0xFF000000U | (QRgb{from[0]} << 24 | QRgb{from[1]} << 16 | QRgb{from[2]} << 8 |
                                    QRgb{from[3]}) >>
                                       8;
    else
        for (auto pixel = pixels.begin(); pixel != last; ++pixel, from += 3)
            *pixel = 0xFF000000U | QRgb{from[0]} | QRgb{from[1]} << 8 | QRgb{from[2]} << 16 |
                     QRgb{from[3]} << 24;
    const size_t red = order == ColourOrder::redFirst ? 0 : 2;
    *last = 0xFF000000U | QRgb{from[red]} << 16 | QRgb{from[1]} << 8 | from[2 - red];
}

void forBandsOfRows(int heightPixels, const std::function<void(int first, int end)>& work) {
    const auto bands = static_cast<size_t>((heightPixels - 1) / rowsOfBand + 1);
    parallelFor(bands, processorCount(), [&](size_t band, unsigned) {
        const int first = static_cast<int>(band) * rowsOfBand;
        work(first, std::min(first + rowsOfBand, heightPixels));
    });
}

} // namespace paperline

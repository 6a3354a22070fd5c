#include "codecs/gif/GifRows.h"

#include "codecs/gif/ErrorDiffusion.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <vector>

namespace paperline {
namespace {

// Black and white, or the greys: the sample is the place.
class PlainRows : public GifRows {
public:
    explicit PlainRows(const BitmapImageRep& page)
        : page_(page), row_(static_cast<size_t>(page.pixelsWide())) {
        const unsigned levels = page.bitsPerPixel() == 1 ? 2 : 256;
        for (unsigned level = 0; level < levels; ++level) {
            const auto sample = static_cast<uint8_t>(level * 255 / (levels - 1));
            palette_.push_back({sample, sample, sample});
        }
    }

    const Palette& palette() const override { return palette_; }

    std::span<uint8_t> row(int32_t y) override {
        const std::span<const uint8_t> samples = page_.row(y);
        if (page_.bitsPerPixel() == 8)
            std::copy_n(samples.begin(), row_.size(), row_.begin());
        else
            for (size_t x = 0; x < row_.size(); ++x)
                row_[x] = static_cast<uint8_t>(samples[x / 8] >> (7 - x % 8) & 1);
        return row_;
    }

private:
    const BitmapImageRep& page_;
    Palette palette_;
    std::vector<uint8_t> row_;
};

uint32_t keyOf(unsigned red, unsigned green, unsigned blue) {
    return red << 16 | green << 8 | blue;
}

// Pages of few colours keep them.
class ExactRows : public GifRows {
public:
    ExactRows(const BitmapImageRep& page, Palette colours)
        : page_(page), palette_(std::move(colours)), row_(static_cast<size_t>(page.pixelsWide())) {
        for (size_t place = 0; place < palette_.size(); ++place) {
            const PaletteColour& colour = palette_[place];
            places_[keyOf(colour.red, colour.green, colour.blue)] = static_cast<uint8_t>(place);
        }
    }

    const Palette& palette() const override { return palette_; }

    std::span<uint8_t> row(int32_t y) override {
        const std::span<const uint8_t> samples = page_.row(y);
        uint32_t previous = UINT32_MAX;
        uint8_t place = 0;
        for (size_t x = 0; x < row_.size(); ++x) {
            const uint32_t key = keyOf(samples[3 * x], samples[3 * x + 1], samples[3 * x + 2]);
            if (key != previous)
                place = places_.find(key)->second;
            previous = key;
            row_[x] = place;
        }
        return row_;
    }

private:
    const BitmapImageRep& page_;
    Palette palette_;
    std::unordered_map<uint32_t, uint8_t> places_;
    std::vector<uint8_t> row_;
};

// Colours are reduced on a thread of its own, ahead of the taker: half of a GIF's work is its
// compression, which is the taker's.
class ReducedRows : public GifRows {
public:
    explicit ReducedRows(const BitmapImageRep& page)
        : page_(page), palette_(choosePalette(page)), diffusion_(palette_, page.pixelsWide()),
          indices_(static_cast<size_t>(page.pixelsWide()) *
                   static_cast<size_t>(page.pixelsHigh())) {
        try {
            ahead_ = std::thread([this] { reduceAll(); });
        } catch (const std::system_error&) {
            reduceAll(); // no thread to be had: first one, then the other
        }
    }
    ~ReducedRows() override {
        if (ahead_.joinable())
            ahead_.join();
    }

    const Palette& palette() const override { return palette_; }

    std::span<uint8_t> row(int32_t y) override {
        int32_t done = rowsDone_.load(std::memory_order_acquire);
        while (done <= y) {
            rowsDone_.wait(done, std::memory_order_acquire);
            done = rowsDone_.load(std::memory_order_acquire);
        }
        return place(y);
    }

private:
    std::span<uint8_t> place(int32_t y) {
        const auto width = static_cast<size_t>(page_.pixelsWide());
        return std::span(indices_).subspan(static_cast<size_t>(y) * width, width);
    }

    void reduceAll() {
        constexpr int32_t rowsAtOnce = 32;
        for (int32_t y = 0; y < page_.pixelsHigh(); ++y) {
            diffusion_.mapRow(page_.row(y), place(y));
            if ((y + 1) % rowsAtOnce != 0 && y + 1 < page_.pixelsHigh())
                continue;
            rowsDone_.store(y + 1, std::memory_order_release);
            rowsDone_.notify_one();
        }
    }

    const BitmapImageRep& page_;
    Palette palette_;
    ErrorDiffusion diffusion_;
    std::vector<uint8_t> indices_;
    std::atomic<int32_t> rowsDone_{0};
    std::thread ahead_; // last: it uses the others
};

} // namespace

std::unique_ptr<GifRows> makeGifRows(const BitmapImageRep& page) {
    if (page.bitsPerPixel() != 24)
        return std::make_unique<PlainRows>(page);
    Palette colours = coloursOfPage(page);
    if (!colours.empty())
        return std::make_unique<ExactRows>(page, std::move(colours));
    return std::make_unique<ReducedRows>(page);
}

} // namespace paperline

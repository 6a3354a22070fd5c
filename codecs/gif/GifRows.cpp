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

// Black and white, or grey: the sample is the index.
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
            expandBits(samples, row_, 1);
        return row_;
    }

private:
    const BitmapImageRep& page_;
    Palette palette_;
    std::vector<uint8_t> row_;
};

// At most 256 colours.
class ExactRows : public GifRows {
public:
    ExactRows(const BitmapImageRep& page, Palette colours)
        : page_(page), palette_(std::move(colours)), row_(static_cast<size_t>(page.pixelsWide())) {
        for (size_t index = 0; index < palette_.size(); ++index)
            indices_[palette_[index].key()] = static_cast<uint8_t>(index);
    }

    const Palette& palette() const override { return palette_; }

    std::span<uint8_t> row(int32_t y) override {
        const std::span<const uint8_t> samples = page_.row(y);
        uint32_t previous = UINT32_MAX;
        uint8_t index = 0;
        for (size_t x = 0; x < row_.size(); ++x) {
            const PaletteColour colour{samples[3 * x], samples[3 * x + 1], samples[3 * x + 2]};
            if (colour.key() != previous)
                index = indices_.find(colour.key())->second;
            previous = colour.key();
            row_[x] = index;
        }
        return row_;
    }

private:
    const BitmapImageRep& page_;
    Palette palette_;
    std::unordered_map<uint32_t, uint8_t> indices_; // by the colour's key
    std::vector<uint8_t> row_;
};

// More colours: a thread maps the rows ahead of the caller, whose compression takes as long.
class ReducedRows : public GifRows {
public:
    explicit ReducedRows(const BitmapImageRep& page)
        : page_(page), palette_(choosePalette(page)), diffusion_(palette_, page.pixelsWide()),
          indices_(static_cast<size_t>(page.pixelsWide()) *
                   static_cast<size_t>(page.pixelsHigh())) {
        try {
            ahead_ = std::thread([this] { reduceAll(); });
        } catch (const std::system_error&) {
            reduceAll();
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
        return indicesOf(y);
    }

private:
    std::span<uint8_t> indicesOf(int32_t y) {
        const auto width = static_cast<size_t>(page_.pixelsWide());
        return std::span(indices_).subspan(static_cast<size_t>(y) * width, width);
    }

    void reduceAll() {
        constexpr int32_t rowsAtOnce = 32;
        for (int32_t y = 0; y < page_.pixelsHigh(); ++y) {
            diffusion_.mapRow(page_.row(y), indicesOf(y));
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

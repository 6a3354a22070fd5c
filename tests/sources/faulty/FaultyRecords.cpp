#include "tests/sources/faulty/FaultyRecords.h"

#include "twain/records/StandardRecords.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace paperline::sources {

using namespace twain;

namespace {

template <typename Record, typename Change> void change(void* data, Change apply) {
    Record record;
    std::memcpy(&record, data, sizeof record);
    apply(record);
    std::memcpy(data, &record, sizeof record);
}

uint32_t rowBytes(const PageFormat& page) {
    return static_cast<uint32_t>(page.bytesPerRow());
}

// Samples and their bits as a source of that depth would give them.
void setBits(abi::ImageInfo& info, int64_t bits) {
    const bool colour = bits == 24 || bits == 48;
    info.SamplesPerPixel = colour ? 3 : bits == 32 ? 4 : 1;
    info.BitsPerPixel = static_cast<int16_t>(bits);
    for (int16_t sample = 0; sample < 8; ++sample)
        info.BitsPerSample[sample] =
            static_cast<int16_t>(sample < info.SamplesPerPixel ? bits / info.SamplesPerPixel : 0);
}

constexpr std::array<ImageInfoDistortion, 5> infoDistortions{{
    {"info-width",
     [](void* data, int64_t value) {
         change<abi::ImageInfo>(data,
                                [&](auto& info) { info.ImageWidth = static_cast<int32_t>(value); });
     }},
    {"info-height",
     [](void* data, int64_t value) {
         change<abi::ImageInfo>(
             data, [&](auto& info) { info.ImageLength = static_cast<int32_t>(value); });
     }},
    {"info-bits",
     [](void* data, int64_t value) {
         change<abi::ImageInfo>(data, [&](auto& info) { setBits(info, value); });
     }},
    {"info-samples",
     [](void* data, int64_t value) {
         change<abi::ImageInfo>(
             data, [&](auto& info) { info.SamplesPerPixel = static_cast<int16_t>(value); });
     }},
    {"info-resolution",
     [](void* data, int64_t value) {
         change<abi::ImageInfo>(data, [&](auto& info) {
             info.XResolution = info.YResolution = {static_cast<int16_t>(value), 0};
         });
     }},
}};

constexpr std::array<StripDistortion, 4> stripFaults{{
    {"strip-outside",
     [](void* data, const PageFormat& page, std::optional<int64_t> value) {
         change<abi::ImageMemXfer>(data, [&](auto& strip) {
             strip.YOffset = static_cast<uint32_t>(page.heightPixels + value.value_or(0));
         });
     }},
    {"strip-short",
     [](void* data, const PageFormat& page, std::optional<int64_t> value) {
         change<abi::ImageMemXfer>(data, [&](auto& strip) {
             strip.BytesPerRow = static_cast<uint32_t>(value.value_or(rowBytes(page) / 2));
         });
     }},
    {"strip-long",
     [](void* data, const PageFormat& page, std::optional<int64_t> value) {
         change<abi::ImageMemXfer>(data, [&](auto& strip) {
             strip.BytesPerRow = static_cast<uint32_t>(value.value_or(int64_t{rowBytes(page)} * 4));
         });
     }},
    {"strip-rows",
     [](void* data, const PageFormat&, std::optional<int64_t> value) {
         change<abi::ImageMemXfer>(data, [&](auto& strip) {
             strip.Rows = static_cast<uint32_t>(value.value_or(UINT32_MAX));
         });
     }},
}};

void fillStrip(void* data, const PageFormat& page, uint32_t firstRow, uint32_t rows) {
    change<abi::ImageMemXfer>(data, [&](auto& strip) {
        strip.Compression = TWCP_NONE;
        strip.BytesPerRow = rowBytes(page);
        strip.Columns = static_cast<uint32_t>(page.widthPixels);
        strip.Rows = rows;
        strip.XOffset = 0;
        strip.YOffset = firstRow;
        strip.BytesWritten = rows * rowBytes(page);
    });
}

} // namespace

void writeEmptyStrip(void* memoryTransfer, const PageFormat& page) {
    fillStrip(memoryTransfer, page, 0, 0);
}

void writeStripBehindPage(void* memoryTransfer, const PageFormat& page, int distance) {
    fillStrip(memoryTransfer, page, static_cast<uint32_t>(page.heightPixels - 1 + distance), 1);
}

uint32_t limitStripBuffer(void* memoryTransfer, const PageFormat& page, int64_t rows) {
    uint32_t length = 0;
    change<abi::ImageMemXfer>(memoryTransfer, [&](auto& strip) {
        length = strip.Memory.Length;
        const int64_t limit = std::min<int64_t>(rows, INT32_MAX) * rowBytes(page);
        strip.Memory.Length = static_cast<uint32_t>(std::min<int64_t>(length, limit));
    });
    return length;
}

void restoreStripBuffer(void* memoryTransfer, uint32_t length) {
    change<abi::ImageMemXfer>(memoryTransfer, [&](auto& strip) { strip.Memory.Length = length; });
}

void writePendingCount(void* pendingTransfers, int64_t count) {
    change<abi::PendingXfers>(pendingTransfers,
                              [&](auto& pending) { pending.Count = static_cast<uint16_t>(count); });
}

std::span<const ImageInfoDistortion> imageInfoDistortions() {
    return infoDistortions;
}
std::span<const StripDistortion> stripDistortions() {
    return stripFaults;
}

} // namespace paperline::sources

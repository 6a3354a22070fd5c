// Records of a transfer, filled in as no honest source would. They lie in the application's memory
// and need not be aligned.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace paperline::sources {

// One strip with zero rows at the page's top.
void writeEmptyStrip(void* memoryTransfer, const PageFormat& page);
// One row that lies `distance` rows below the page's last one. The buffer is not touched.
void writeStripBehindPage(void* memoryTransfer, const PageFormat& page, int distance);

// Makes the buffer look as if it held `rows` rows; gives its real length, to be restored.
uint32_t limitStripBuffer(void* memoryTransfer, const PageFormat& page, int64_t rows);
void restoreStripBuffer(void* memoryTransfer, uint32_t length);

void writePendingCount(void* pendingTransfers, int64_t count);

using ImageInfoDistortion = std::pair<std::string_view, void (*)(void* imageInfo, int64_t value)>;
std::span<const ImageInfoDistortion> imageInfoDistortions();

using StripDistortion =
    std::pair<std::string_view,
              void (*)(void* memoryTransfer, const PageFormat& page, std::optional<int64_t> value)>;
std::span<const StripDistortion> stripDistortions();

} // namespace paperline::sources

#include "sources/framework/ScanTypes.h"

#include <algorithm>
#include <cmath>

namespace paperline::sources {

int64_t pageByteCount(const PageFormat& format) {
    const int bits = format.bitsPerPixel;
    if (format.widthPixels <= 0 || format.heightPixels <= 0 ||
        (bits != 1 && bits != 8 && bits != 24) || !std::isfinite(format.horizontalDpi) ||
        !std::isfinite(format.verticalDpi))
        return 0;
    const int64_t bytesPerRow = format.bytesPerRow();
    if (bytesPerRow > INT32_MAX || bytesPerRow > maximumPageBytes / format.heightPixels)
        return 0;
    return bytesPerRow * format.heightPixels;
}

const OptionDescriptor* findOption(const std::vector<OptionDescriptor>& options,
                                   std::string_view name) {
    const auto found = std::find_if(
        options.begin(), options.end(), [&](const auto& option) { return option.name == name; });
    return found == options.end() ? nullptr : &*found;
}

} // namespace paperline::sources

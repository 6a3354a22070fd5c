// Settings and bundles' descriptions. What is written can be read again.
#include "platform/plist/PropertyList.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
    using namespace paperline;
    const auto root = parsePropertyList({bytes, count});
    if (!root)
        return 0;
    const auto written = serialisePropertyList(*root);
    if (written && !parsePropertyList(*written))
        std::abort();
    return 0;
}

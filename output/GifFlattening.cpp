#include "output/GifFlattening.h"

#include <cstdlib>

namespace paperline {

int32_t gifSystemVersionNumber(const std::string& productVersion) {
    const size_t firstPoint = productVersion.find('.');
    if (firstPoint == std::string::npos)
        return 0;
    const size_t start = firstPoint + 1;
    const size_t end = productVersion.find('.', start);
    const std::string component =
        productVersion.substr(start, end == std::string::npos ? end : end - start);
    return static_cast<int32_t>(std::strtol(component.c_str(), nullptr, 16));
}

bool flattensGif(int32_t gifSystemVersion) {
    return gifSystemVersion < 7 || gifSystemVersion >= 19;
}

bool flattensTransferredGif(uint32_t packedSystemVersion) {
    return packedSystemVersion >= 0x1060 && packedSystemVersion < 0x1070;
}

} // namespace paperline

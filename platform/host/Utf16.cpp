#include "platform/host/Utf16.h"

#include "platform/host/Utf.h"

namespace paperline {

DecodedText decodeUtf16(std::span<const uint8_t> bytes, bool bigEndian) {
    DecodedText decoded;
    const auto unitAt = [&](size_t i) -> uint32_t {
        return bigEndian ? static_cast<uint32_t>(bytes[i] << 8 | bytes[i + 1])
                         : static_cast<uint32_t>(bytes[i + 1] << 8 | bytes[i]);
    };
    size_t i = 0;
    for (; i + 1 < bytes.size(); i += 2) {
        const uint32_t unit = unitAt(i);
        if (isHighSurrogate(unit)) {
            if (i + 3 >= bytes.size() || !isLowSurrogate(unitAt(i + 2)))
                break;
            appendUtf8(decoded.utf8, joinSurrogates(unit, unitAt(i + 2)));
            i += 2;
        } else if (isLowSurrogate(unit)) {
            break;
        } else {
            appendUtf8(decoded.utf8, unit);
        }
    }
    decoded.whole = i == bytes.size();
    return decoded;
}

} // namespace paperline

#include "twain/records/TwainTypes.h"

#include <algorithm>
#include <cstring>

TW_STR32 TW_STR32::from(std::string_view text) {
    TW_STR32 result{};
    size_t length = std::min<size_t>(text.size(), result.bytes.size() - 1);
    if (length < text.size()) {
        // Step back over UTF-8 continuation bytes, so that no character is cut in two.
        while (length > 0 && (static_cast<uint8_t>(text[length]) & 0xc0U) == 0x80U)
            --length;
    }
    result.bytes[0] = static_cast<uint8_t>(length);
    std::memcpy(result.bytes.data() + 1, text.data(), length);
    return result;
}

std::string TW_STR32::text() const {
    const size_t length = std::min<size_t>(bytes[0], bytes.size() - 1);
    return {bytes.begin() + 1, bytes.begin() + 1 + static_cast<std::ptrdiff_t>(length)};
}

#include "platform/host/Utf.h"

#include <cstring>

namespace paperline {
namespace {

constexpr uint32_t replacement = 0xFFFD;

struct Decoded {
    uint32_t codePoint;
    size_t length; // bytes taken, at least 1
    bool valid;
};

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// The second byte's range excludes overlong forms, surrogates and what lies above U+10FFFF.
bool isSecondByte(unsigned lead, unsigned second) {
    const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= lowest && second <= highest;
}

// The first character of the text, which is not empty. Of an invalid sequence the longest start
// that could have become a character counts as one.
Decoded decode(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80)
        return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {replacement, 1, false};
    const size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (text.size() < 2 || !isSecondByte(lead, static_cast<unsigned char>(text[1])))
        return {replacement, 1, false};
    uint32_t codePoint = lead & (0x7FU >> length);
    for (size_t index = 1; index < length; ++index) {
        if (index >= text.size() || !isContinuation(text[index]))
            return {replacement, index, false};
        codePoint = (codePoint << 6U) | (static_cast<unsigned char>(text[index]) & 0x3FU);
    }
    return {codePoint, length, true};
}

} // namespace

std::vector<uint8_t> utf16WithMark(std::string_view utf8) {
    std::u16string units(1, u'\uFEFF');
    units.reserve(utf8.size() + 1);
    while (!utf8.empty()) {
        const Decoded next = decode(utf8);
        if (next.codePoint >= 0x10000) {
            const uint32_t offset = next.codePoint - 0x10000;
            units += static_cast<char16_t>(0xD800 + (offset >> 10U));
            units += static_cast<char16_t>(0xDC00 + (offset & 0x3FFU));
        } else {
            units += static_cast<char16_t>(next.codePoint);
        }
        utf8.remove_prefix(next.length);
    }
    std::vector<uint8_t> bytes(units.size() * sizeof(char16_t));
    std::memcpy(bytes.data(), units.data(), bytes.size());
    return bytes;
}

bool isValidUtf8(std::string_view text) {
    while (!text.empty()) {
        const Decoded next = decode(text);
        if (!next.valid)
            return false;
        text.remove_prefix(next.length);
    }
    return true;
}

std::string_view wholeCharacters(std::string_view utf8, size_t maximumBytes) {
    if (utf8.size() <= maximumBytes)
        return utf8;
    size_t end = maximumBytes;
    // A character has at most three continuation bytes; more of them are invalid text anyway.
    while (end > 0 && maximumBytes - end < 3 && isContinuation(utf8[end]))
        --end;
    return utf8.substr(0, end);
}

} // namespace paperline

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

// Excludes overlong forms, surrogates and code points above U+10FFFF.
bool isSecondByte(unsigned lead, unsigned second) {
    const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= lowest && second <= highest;
}

// The first character of a text that is not empty. Invalid bytes count as one character as long as
// they could be the start of a valid one.
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

size_t validUtf8Length(std::string_view text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        const Decoded next = decode(rest);
        if (!next.valid)
            break;
        rest.remove_prefix(next.length);
    }
    return text.size() - rest.size();
}

bool isValidUtf8(std::string_view text) {
    return validUtf8Length(text) == text.size();
}

void appendUtf8(std::string& text, uint32_t codePoint) {
    const auto put = [&text](uint32_t byte) { text += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | codePoint >> 6);
        put(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        put(0xE0 | codePoint >> 12);
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    } else {
        put(0xF0 | codePoint >> 18);
        put(0x80 | (codePoint >> 12 & 0x3F));
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
}

std::string utf8FromLatin1(std::string_view text) {
    std::string utf8;
    for (const char character : text)
        appendUtf8(utf8, static_cast<unsigned char>(character));
    return utf8;
}

std::string_view wholeCharacters(std::string_view utf8, size_t maximumBytes) {
    if (utf8.size() <= maximumBytes)
        return utf8;
    size_t end = maximumBytes;
    // A character has at most three continuation bytes; with more the text is invalid.
    while (end > 0 && maximumBytes - end < 3 && isContinuation(utf8[end]))
        --end;
    return utf8.substr(0, end);
}

} // namespace paperline

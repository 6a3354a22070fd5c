// Text encodings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace paperline {

// The text in UTF-16 of the machine's byte order, after a byte-order mark. Invalid sequences become
// U+FFFD.
std::vector<uint8_t> utf16WithMark(std::string_view utf8);

bool isValidUtf8(std::string_view text);
// The length in bytes of the valid text in front of the first invalid sequence.
size_t validUtf8Length(std::string_view text);
void appendUtf8(std::string& text, uint32_t codePoint);
std::string utf8FromLatin1(std::string_view text);
// As much of the text as fits into `maximumBytes` without cutting a character.
std::string_view wholeCharacters(std::string_view utf8, size_t maximumBytes);

} // namespace paperline

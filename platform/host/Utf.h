// Text encodings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace paperline {

// UTF-8 to UTF-16 in the machine's byte order with a byte-order mark in front. Invalid sequences
// become U+FFFD.
std::vector<uint8_t> utf16WithMark(std::string_view utf8);
bool isValidUtf8(std::string_view text);
// The longest start of the text that is at most `maximumBytes` long and ends with a whole
// character.
std::string_view wholeCharacters(std::string_view utf8, size_t maximumBytes);

} // namespace paperline

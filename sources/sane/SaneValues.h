// Values of SANE options as text. Numbers are read and written without regard to the locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

// SANE's fixed-point numbers have 16 bits after the point.
inline constexpr double saneFixedScale = 65536.0;

std::string saneWordText(int32_t word, bool isFixed);
// Nothing for text that is no number or one that a word cannot hold.
std::optional<int32_t> saneWordFromText(std::string_view text, bool isFixed);

std::optional<bool> booleanFromText(std::string_view text); // yes, true, on, 1 and their opposites

// Comma separated parts, blanks around them dropped.
std::vector<std::string> listParts(std::string_view text);

// Index of the choice meant by the text: the same, or the only one that differs in case alone.
std::optional<size_t> matchingChoice(const std::vector<std::string>& choices,
                                     std::string_view text);

// Older drivers speak Latin-1: text that is no UTF-8 is taken as that.
std::string utf8FromDriver(const char* text);

} // namespace paperline::sources

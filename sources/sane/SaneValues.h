// Values of SANE options as text, the same in every locale.
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
// Nothing for text that is no number, or a number out of range.
std::optional<int32_t> saneWordFromText(std::string_view text, bool isFixed);

std::optional<bool> booleanFromText(std::string_view text); // yes, true, on, 1 and their opposites

// The parts between commas, trimmed.
std::vector<std::string> listParts(std::string_view text);

// The choice that equals the text, or the only one that differs in case alone.
std::optional<size_t> matchingChoice(const std::vector<std::string>& choices,
                                     std::string_view text);

// Text that is not valid UTF-8 is Latin-1, which older drivers use.
std::string utf8FromDriver(const char* text);

} // namespace paperline::sources

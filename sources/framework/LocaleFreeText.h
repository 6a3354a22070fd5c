// Texts and numbers, the same in every locale. Only ASCII letters have a case here.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace paperline::sources {

std::string_view trimmed(std::string_view text); // without blanks at its ends

// Removes the text before the delimiter, or all of it, and the delimiter; returns the former.
std::string_view takePart(std::string_view& text, char delimiter);

bool equalsIgnoringCase(std::string_view first, std::string_view second);
bool containsIgnoringCase(std::string_view text, std::string_view part);

// Nothing unless the whole text is a finite number.
std::optional<double> numberFromText(std::string_view text);
double leadingNumber(std::string_view text); // 300 of "300 dpi"; 0 without a number
std::string numberText(double number);       // the shortest text that reads back the same
std::string decimalText(double number);      // at most four digits after the point

} // namespace paperline::sources

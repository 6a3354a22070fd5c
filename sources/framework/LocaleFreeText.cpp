#include "sources/framework/LocaleFreeText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace paperline::sources {

namespace {

bool sameLetter(char one, char other) {
    const auto lower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    };
    return lower(one) == lower(other);
}

} // namespace

std::string_view trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

std::string_view takePart(std::string_view& text, char delimiter) {
    const size_t end = std::min(text.find(delimiter), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

bool equalsIgnoringCase(std::string_view first, std::string_view second) {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(), sameLetter);
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    return part.empty() ||
           std::search(text.begin(), text.end(), part.begin(), part.end(), sameLetter) !=
               text.end();
}

std::optional<double> numberFromText(std::string_view text) {
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() ||
        !std::isfinite(number))
        return std::nullopt;
    return number;
}

double leadingNumber(std::string_view text) {
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string numberText(double number) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string decimalText(double number) {
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(
        buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed, 4);
    std::string text(buffer.data(), result.ptr);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.'))
        text.pop_back();
    return text == "-0" ? "0" : text;
}

} // namespace paperline::sources

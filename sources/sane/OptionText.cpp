#include "sources/sane/OptionText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace paperline::sources {

namespace {

char lowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                                : character;
}

std::string_view trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

// Length of the UTF-8 sequence that starts the text, 0 when none does.
size_t sequenceLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t length = first < 0x80                    ? 1
                          : first >= 0xC2 && first < 0xE0 ? 2
                          : first >= 0xE0 && first < 0xF0 ? 3
                          : first >= 0xF0 && first < 0xF5 ? 4
                                                          : 0;
    if (length > text.size())
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80)
            return 0;
    return length;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = sequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace

std::string saneWordText(int32_t word, bool isFixed) {
    if (!isFixed)
        return std::to_string(word);
    // Four digits are what 16 bits after the point are worth.
    char buffer[40];
    const auto result = std::to_chars(
        buffer, buffer + sizeof buffer, word / saneFixedScale, std::chars_format::fixed, 4);
    std::string text(buffer, result.ptr);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.'))
        text.pop_back();
    return text == "-0" ? "0" : text;
}

std::optional<int32_t> saneWordFromText(std::string_view text, bool isFixed) {
    text = trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() ||
        !std::isfinite(number))
        return std::nullopt;
    const double word = std::round(isFixed ? number * saneFixedScale : number);
    if (word < INT32_MIN || word > INT32_MAX)
        return std::nullopt;
    return static_cast<int32_t>(word);
}

std::optional<bool> booleanFromText(std::string_view text) {
    text = trimmed(text);
    for (const std::string_view word : {"yes", "true", "on", "1"})
        if (equalsIgnoringCase(text, word))
            return true;
    for (const std::string_view word : {"no", "false", "off", "0"})
        if (equalsIgnoringCase(text, word))
            return false;
    return std::nullopt;
}

std::vector<std::string> listParts(std::string_view text) {
    std::vector<std::string> parts;
    for (;;) {
        const size_t comma = text.find(',');
        parts.emplace_back(trimmed(text.substr(0, comma)));
        if (comma == std::string_view::npos)
            return parts;
        text.remove_prefix(comma + 1);
    }
}

std::optional<size_t> matchingChoice(const std::vector<std::string>& choices,
                                     std::string_view text) {
    const auto exact = std::find(choices.begin(), choices.end(), text);
    if (exact != choices.end())
        return static_cast<size_t>(exact - choices.begin());
    std::optional<size_t> match;
    for (size_t i = 0; i < choices.size(); ++i) {
        if (!equalsIgnoringCase(choices[i], text))
            continue;
        if (match)
            return std::nullopt;
        match = i;
    }
    return match;
}

bool equalsIgnoringCase(std::string_view first, std::string_view second) {
    return std::equal(
        first.begin(), first.end(), second.begin(), second.end(), [](char one, char other) {
            return lowerCase(one) == lowerCase(other);
        });
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    const auto found =
        std::search(text.begin(), text.end(), part.begin(), part.end(), [](char one, char other) {
            return lowerCase(one) == lowerCase(other);
        });
    return found != text.end() || part.empty();
}

std::string utf8FromDriver(const char* text) {
    if (text == nullptr)
        return {};
    const std::string_view given = text;
    if (isUtf8(given))
        return std::string(given);
    std::string converted;
    for (const char character : given) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            converted += character;
        } else {
            converted += static_cast<char>(0xC0 | (code >> 6));
            converted += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return converted;
}

} // namespace paperline::sources

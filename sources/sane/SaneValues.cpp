#include "sources/sane/SaneValues.h"

#include "platform/host/Utf.h"
#include "sources/framework/LocaleFreeText.h"

#include <algorithm>
#include <cmath>

namespace paperline::sources {

std::string saneWordText(int32_t word, bool isFixed) {
    if (!isFixed)
        return std::to_string(word);
    // 16 bits after the point are precise to four digits.
    return decimalText(word / saneFixedScale);
}

std::optional<int32_t> saneWordFromText(std::string_view text, bool isFixed) {
    text = trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const std::optional<double> number = numberFromText(text);
    if (!number)
        return std::nullopt;
    const double word = std::round(isFixed ? *number * saneFixedScale : *number);
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
    for (bool last = false; !last;) {
        last = text.find(',') == std::string_view::npos;
        parts.emplace_back(trimmed(takePart(text, ',')));
    }
    return parts;
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

std::string utf8FromDriver(const char* text) {
    if (text == nullptr)
        return {};
    const std::string_view given = text;
    if (isValidUtf8(given))
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

#include "base/StringsFile.h"

#include "platform/host/Utf.h"
#include "platform/host/Utf16.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace paperline {
namespace {

DecodedText decodeUtf8(std::span<const uint8_t> bytes) {
    std::string text(bytes.begin(), bytes.end());
    text.resize(validUtf8Length(text));
    const bool whole = text.size() == bytes.size();
    return {std::move(text), whole};
}

DecodedText decode(std::span<const uint8_t> bytes) {
    if (bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE)
        return decodeUtf16(bytes.subspan(2), false);
    if (bytes.size() >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF)
        return decodeUtf16(bytes.subspan(2), true);
    if (bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF)
        return decodeUtf8(bytes.subspan(3));
    return decodeUtf8(bytes);
}

bool isBareCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_-./:$").find(c) != std::string_view::npos;
}

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Its readers move past what they read. They return false or nothing where the syntax is wrong.
class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    // True at the end of the text, false at the first fault.
    bool readEntries(std::map<std::string, std::string>& texts) {
        while (true) {
            if (!skipBlanksAndComments())
                return false;
            if (atEnd())
                return true;
            if (!readEntry(texts))
                return false;
        }
    }

    size_t line() const {
        const auto read = text_.substr(0, position_);
        return 1 + static_cast<size_t>(std::count(read.begin(), read.end(), '\n'));
    }

private:
    bool atEnd() const { return position_ >= text_.size(); }
    bool at(char c) const { return !atEnd() && text_[position_] == c; }
    bool atText(std::string_view wanted) const {
        return text_.substr(position_).starts_with(wanted);
    }

    bool readEntry(std::map<std::string, std::string>& texts) {
        std::optional<std::string> key = readToken();
        if (!key || !skipBlanksAndComments())
            return false;
        std::string value = *key;
        if (at('=')) {
            ++position_;
            if (!skipBlanksAndComments())
                return false;
            std::optional<std::string> read = readToken();
            if (!read || !skipBlanksAndComments())
                return false;
            value = std::move(*read);
        }
        if (!at(';'))
            return false;
        ++position_;
        texts.insert_or_assign(std::move(*key), std::move(value));
        return true;
    }

    // False for a comment without an end.
    bool skipBlanksAndComments() {
        while (!atEnd()) {
            if (isBlank(text_[position_])) {
                ++position_;
            } else if (atText("//")) {
                position_ = std::min(text_.find('\n', position_), text_.size());
            } else if (atText("/*")) {
                const size_t end = text_.find("*/", position_ + 2);
                if (end == std::string_view::npos)
                    return false;
                position_ = end + 2;
            } else {
                return true;
            }
        }
        return true;
    }

    std::optional<std::string> readToken() {
        if (at('"') || at('\''))
            return readQuoted(text_[position_]);
        const size_t start = position_;
        while (!atEnd() && isBareCharacter(text_[position_]) && !atText("//") && !atText("/*"))
            ++position_;
        if (position_ == start)
            return std::nullopt;
        return std::string(text_.substr(start, position_ - start));
    }

    std::optional<std::string> readQuoted(char quote) {
        std::string value;
        ++position_;
        while (!atEnd()) {
            const char c = text_[position_++];
            if (c == quote)
                return value;
            if (c == '\0')
                return std::nullopt;
            if (c != '\\')
                value.push_back(c);
            else if (!readEscape(value))
                return std::nullopt;
        }
        return std::nullopt;
    }

    bool readEscape(std::string& value) {
        if (atEnd())
            return false;
        const char c = text_[position_++];
        if (c == 'U' || c == 'u')
            return readUnicodeEscape(value);
        if (c >= '0' && c <= '7') {
            --position_;
            return readOctalEscape(value);
        }
        constexpr std::string_view letters = "abfnrtv";
        constexpr std::string_view meanings = "\a\b\f\n\r\t\v";
        const size_t letter = letters.find(c);
        if (letter != std::string_view::npos)
            value.push_back(meanings[letter]);
        else if (c != '\n') // a backslash joins lines; any other character stands for itself
            value.push_back(c);
        return true;
    }

    bool readOctalEscape(std::string& value) {
        uint32_t number = 0;
        for (int digit = 0; digit < 3 && !atEnd(); ++digit, ++position_) {
            const char c = text_[position_];
            if (c < '0' || c > '7')
                break;
            number = number * 8 + static_cast<uint32_t>(c - '0');
        }
        if (number == 0)
            return false;
        appendUtf8(value, number);
        return true;
    }

    bool readUnicodeEscape(std::string& value) {
        const std::optional<uint32_t> unit = readHexadecimalUnit();
        if (!unit || *unit == 0 || isLowSurrogate(*unit))
            return false;
        if (!isHighSurrogate(*unit)) {
            appendUtf8(value, *unit);
            return true;
        }
        if (!atText("\\U") && !atText("\\u"))
            return false;
        position_ += 2;
        const std::optional<uint32_t> low = readHexadecimalUnit();
        if (!low || !isLowSurrogate(*low))
            return false;
        appendUtf8(value, joinSurrogates(*unit, *low));
        return true;
    }

    std::optional<uint32_t> readHexadecimalUnit() {
        if (text_.size() - position_ < 4)
            return std::nullopt;
        uint32_t number = 0;
        for (int digit = 0; digit < 4; ++digit) {
            const size_t place =
                std::string_view("0123456789abcdef0123456789ABCDEF").find(text_[position_++]);
            if (place == std::string_view::npos)
                return std::nullopt;
            number = number * 16 + static_cast<uint32_t>(place % 16);
        }
        return number;
    }

    std::string_view text_;
    size_t position_ = 0;
};

} // namespace

StringsFile parseStringsFile(std::span<const uint8_t> bytes) {
    const DecodedText text = decode(bytes);
    StringsFile file;
    Parser parser(text.utf8);
    file.damaged = !parser.readEntries(file.texts) || !text.whole;
    if (file.damaged)
        file.damagedLine = parser.line();
    return file;
}

} // namespace paperline

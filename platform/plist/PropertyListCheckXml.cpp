#include "platform/plist/PropertyListCheck.h"

#include "platform/host/Utf.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>

namespace paperline {
namespace {

using std::string_view;

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

string_view trimmed(string_view text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

template <typename Number> bool readsWhole(string_view digits, int base) {
    Number number = 0;
    const auto [end, failure] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    return failure == std::errc() && end == digits.data() + digits.size();
}

// The library reads a leading zero as octal and stops silently at the first odd character.
bool isInteger(string_view text) {
    text = trimmed(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    if (text.starts_with("0x") || text.starts_with("0X"))
        return !negative && readsWhole<uint64_t>(text.substr(2), 16);
    if (text.empty() || !isDigit(text[0]) || (text.size() > 1 && text[0] == '0'))
        return false;
    if (!readsWhole<uint64_t>(text, 10))
        return false;
    uint64_t magnitude = 0;
    std::from_chars(text.data(), text.data() + text.size(), magnitude);
    return !negative || magnitude <= uint64_t{1} << 63U;
}

bool isReal(string_view text) {
    text = trimmed(text);
    if (text.starts_with('+') || text.starts_with('-'))
        text.remove_prefix(1);
    for (string_view word : {"nan", "inf", "infinity"})
        if (text == word)
            return true;
    if (text.empty() || !(isDigit(text[0]) || text[0] == '.'))
        return false;
    double number = 0;
    const auto [end, failure] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::general);
    return failure == std::errc() && end == text.data() + text.size();
}

// Base 64 in groups of four, blanks anywhere, padding only at the end.
bool isData(string_view text) {
    size_t characters = 0;
    size_t padding = 0;
    for (const char c : text) {
        if (isSpace(c))
            continue;
        const bool inAlphabet =
            isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '+' || c == '/';
        if (c == '=')
            ++padding;
        else if (!inAlphabet || padding > 0)
            return false;
        ++characters;
    }
    return characters % 4 == 0 && padding <= 2;
}

bool isXmlCharacter(uint64_t codePoint) {
    if (codePoint < 0x20)
        return codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
    return codePoint < 0xD800 || (codePoint > 0xDFFF && codePoint < 0xFFFE) ||
           (codePoint >= 0x10000 && codePoint <= 0x10FFFF);
}

// The reference without "&" and ";".
bool isReference(string_view name) {
    for (string_view known : {"amp", "lt", "gt", "quot", "apos"})
        if (name == known)
            return true;
    if (!name.starts_with('#'))
        return false;
    const int base = name.starts_with("#x") ? 16 : 10;
    const string_view digits = name.substr(base == 16 ? 2 : 1);
    uint32_t codePoint = 0;
    const auto [end, failure] =
        std::from_chars(digits.data(), digits.data() + digits.size(), codePoint, base);
    return failure == std::errc() && end == digits.data() + digits.size() &&
           isXmlCharacter(codePoint);
}

bool hasSoundReferences(string_view text) {
    for (size_t at = text.find('&'); at != string_view::npos; at = text.find('&', at + 1)) {
        const size_t end = text.find(';', at);
        if (end == string_view::npos || !isReference(text.substr(at + 1, end - at - 1)))
            return false;
    }
    return true;
}

struct Tag {
    string_view name;
    bool closing = false; // </name>
    bool empty = false;   // <name/>
};

class XmlCheck {
public:
    explicit XmlCheck(string_view text) : rest_(text) {}

    bool document() {
        if (!skipProlog())
            return false;
        const std::optional<Tag> start = tag(true);
        if (!start || start->name != "plist" || start->closing || start->empty)
            return false;
        return value(0) && closes("plist") && skipBlanksAndComments() && rest_.empty();
    }

private:
    bool skipPast(string_view end) {
        const size_t at = rest_.find(end);
        if (at == string_view::npos)
            return false;
        rest_.remove_prefix(at + end.size());
        return true;
    }

    bool skipBlanksAndComments() {
        for (;;) {
            while (!rest_.empty() && isSpace(rest_.front()))
                rest_.remove_prefix(1);
            if (!rest_.starts_with("<!--"))
                return true;
            rest_.remove_prefix(4);
            if (!skipPast("-->"))
                return false;
        }
    }

    bool skipProlog() {
        if (rest_.starts_with("<?xml") && !skipPast("?>"))
            return false;
        if (!skipBlanksAndComments())
            return false;
        if (!rest_.starts_with("<!DOCTYPE"))
            return true;
        // Definitions of entities ("[ ... ]") could make much out of little.
        const string_view declaration = rest_.substr(0, rest_.find('>'));
        return declaration.find('[') == string_view::npos && skipPast(">");
    }

    // The next tag behind blanks and comments.
    std::optional<Tag> tag(bool attributesAllowed = false) {
        if (!skipBlanksAndComments() || !rest_.starts_with('<'))
            return std::nullopt;
        const size_t end = rest_.find('>');
        if (end == string_view::npos)
            return std::nullopt;
        string_view inner = rest_.substr(1, end - 1);
        rest_.remove_prefix(end + 1);
        Tag result;
        if ((result.closing = inner.starts_with('/')))
            inner.remove_prefix(1);
        else if ((result.empty = inner.ends_with('/')))
            inner.remove_suffix(1);
        while (!inner.empty() && isSpace(inner.back()))
            inner.remove_suffix(1);
        const auto* nameEnd = std::find_if(inner.begin(), inner.end(), isSpace);
        result.name = inner.substr(0, static_cast<size_t>(nameEnd - inner.begin()));
        const bool hasAttributes = result.name.size() != inner.size();
        if (hasAttributes && (!attributesAllowed || result.closing))
            return std::nullopt;
        return result;
    }

    bool closes(string_view name) {
        const std::optional<Tag> end = tag();
        return end && end->closing && end->name == name;
    }

    bool value(int depth) {
        const std::optional<Tag> start = tag();
        return start && !start->closing && valueBehind(*start, depth);
    }

    bool valueBehind(const Tag& start, int depth) {
        if (depth >= PropertyListLimits::depth || ++values_ > PropertyListLimits::values)
            return false;
        if (start.name == "dict")
            return start.empty || dictionary(depth);
        if (start.name == "array")
            return start.empty || array(depth);
        if (start.name == "true" || start.name == "false")
            return start.empty || (trimmed(textToTag()).empty() && closes(start.name));
        if (start.name == "string" || start.name == "data")
            return start.empty || leaf(start.name);
        return !start.empty && leaf(start.name);
    }

    bool dictionary(int depth) {
        for (;;) {
            const std::optional<Tag> next = tag();
            if (!next || next->empty)
                return false;
            if (next->closing)
                return next->name == "dict";
            if (next->name != "key" || !text() || !closes("key") || !value(depth + 1))
                return false;
        }
    }

    bool array(int depth) {
        for (;;) {
            const std::optional<Tag> next = tag();
            if (!next)
                return false;
            if (next->closing)
                return next->name == "array";
            if (!valueBehind(*next, depth + 1))
                return false;
        }
    }

    string_view textToTag() {
        const string_view result = rest_.substr(0, rest_.find('<'));
        rest_.remove_prefix(result.size());
        return result;
    }

    // Characters, references, comments and literal sections up to the closing tag.
    bool text() {
        for (;;) {
            if (!hasSoundReferences(textToTag()))
                return false;
            if (rest_.starts_with("<![CDATA[")) {
                if (!skipPast("]]>"))
                    return false;
            } else if (rest_.starts_with("<!--")) {
                rest_.remove_prefix(4);
                if (!skipPast("-->"))
                    return false;
            } else {
                return !rest_.empty();
            }
        }
    }

    bool leaf(string_view name) {
        if (name == "string")
            return text() && closes(name);
        const string_view content = textToTag();
        const bool sound =
            (name == "integer" && isInteger(content)) || (name == "real" && isReal(content)) ||
            (name == "date" && isPropertyListDate(content)) || (name == "data" && isData(content));
        return sound && closes(name);
    }

    string_view rest_;
    size_t values_ = 0;
};

} // namespace

bool isXmlText(string_view text) {
    const bool hasControl = std::any_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && !isSpace(c);
    });
    return !hasControl && text.find("\xEF\xBF\xBE") == string_view::npos &&
           text.find("\xEF\xBF\xBF") == string_view::npos && isValidUtf8(text);
}

bool isPropertyListDate(string_view text) {
    constexpr string_view form = "0000-00-00T00:00:00Z";
    if (text.size() != form.size())
        return false;
    for (size_t at = 0; at < form.size(); ++at)
        if (form[at] == '0' ? !isDigit(text[at]) : text[at] != form[at])
            return false;
    const auto number = [text](size_t at, size_t length) {
        unsigned value = 0;
        std::from_chars(text.data() + at, text.data() + at + length, value);
        return value;
    };
    const std::chrono::year_month_day day{std::chrono::year(static_cast<int>(number(0, 4))),
                                          std::chrono::month(number(5, 2)),
                                          std::chrono::day(number(8, 2))};
    return day.ok() && day.year() > std::chrono::year(0) && number(11, 2) < 24 &&
           number(14, 2) < 60 && number(17, 2) < 60;
}

bool isSoundXmlPropertyList(string_view text) {
    return text.size() <= PropertyListLimits::fileBytes && isXmlText(text) &&
           XmlCheck(text).document();
}

} // namespace paperline

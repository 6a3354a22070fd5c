// The XML form, read by expat.
#include "platform/host/Utf.h"
#include "platform/plist/PropertyListForms.h"

#include <algorithm>
#include <charconv>
#include <expat.h>
#include <memory>
#include <string_view>
#include <utility>

namespace paperline {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr const char* blanks = " \t\r\n";
    const size_t start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

template <typename Number> std::optional<Number> wholeNumber(std::string_view digits, int base) {
    Number number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, failure] = std::from_chars(digits.data(), end, number, base);
    return failure == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// "-42", "+7", "0x1F"; the whole text must be the number.
std::optional<PropertyListValue> integerOf(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (isHexadecimal)
        text.remove_prefix(2);
    const int base = isHexadecimal ? 16 : 10;
    if (const auto number = wholeNumber<int64_t>(text, base))
        return PropertyListValue(*number);
    if (const auto number = wholeNumber<uint64_t>(text, base))
        return PropertyListValue(*number);
    return std::nullopt;
}

class Reader {
public:
    Reader() : parser_(XML_ParserCreate(nullptr)) {
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), &Reader::onStart, &Reader::onEnd);
        XML_SetCharacterDataHandler(parser_.get(), &Reader::onText);
        XML_SetEntityDeclHandler(parser_.get(), &Reader::onEntity);
        XML_SetSkippedEntityHandler(parser_.get(), &Reader::onSkippedEntity);
    }

    std::optional<PropertyListValue> read(std::span<const uint8_t> bytes) {
        if (!parser_ || bytes.size() > propertyListLimits.fileBytes)
            return std::nullopt;
        const auto status = XML_Parse(parser_.get(),
                                      reinterpret_cast<const char*>(bytes.data()),
                                      static_cast<int>(bytes.size()),
                                      XML_TRUE);
        return status == XML_STATUS_OK ? std::move(root_) : std::nullopt;
    }

private:
    struct ParserFree {
        void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
    };
    // A dictionary or an array whose end has not come yet.
    struct Container {
        PropertyListDictionary dictionary;
        PropertyListArray array;
        bool isArray = false;
        std::optional<std::string> key; // of a dictionary, waiting for its value
    };

    static Reader& self(void* user) { return *static_cast<Reader*>(user); }
    static void XMLCALL onStart(void* user, const XML_Char* name, const XML_Char** /*attributes*/) {
        self(user).start(name);
    }
    static void XMLCALL onEnd(void* user, const XML_Char* name) { self(user).end(name); }
    static void XMLCALL onText(void* user, const XML_Char* text, int length) {
        self(user).characters({text, static_cast<size_t>(length)});
    }
    static void XMLCALL onEntity(void* user,
                                 const XML_Char*,
                                 int,
                                 const XML_Char*,
                                 int,
                                 const XML_Char*,
                                 const XML_Char*,
                                 const XML_Char*,
                                 const XML_Char*) {
        self(user).refuse();
    }

    static void XMLCALL onSkippedEntity(void* user, const XML_Char*, int) { self(user).refuse(); }

    void refuse() { XML_StopParser(parser_.get(), XML_FALSE); }

    void start(std::string_view name) {
        const int depth = ++depth_;
        const bool isContainer = name == "dict" || name == "array";
        if (depth == 1) {
            if (name != "plist")
                refuse();
        } else if (depth > 2 && containers_.empty()) {
            refuse(); // an element within a text, a number or a flag
        } else if (leaf_ || depth > propertyListLimits.depth ||
                   ++values_ > propertyListLimits.values) {
            refuse();
        } else if (isContainer) {
            containers_.emplace_back().isArray = name == "array";
        } else {
            leaf_ = std::string(name);
            text_.clear();
        }
    }

    void characters(std::string_view text) {
        if (leaf_)
            text_.append(text);
        else if (!trimmed(text).empty())
            refuse();
    }

    void end(std::string_view name) {
        --depth_;
        if (depth_ == 0)
            return;
        if (leaf_) {
            endLeaf(*std::exchange(leaf_, std::nullopt));
            return;
        }
        Container done = std::move(containers_.back());
        containers_.pop_back();
        if (done.key) // without a value
            refuse();
        else if (name == "array")
            add(PropertyListValue(std::move(done.array)));
        else
            add(PropertyListValue(std::move(done.dictionary)));
    }

    void endLeaf(const std::string& name) {
        if (name == "key") {
            if (containers_.empty() || containers_.back().isArray || containers_.back().key)
                refuse();
            else
                containers_.back().key = text_;
        } else if (name == "string") {
            add(PropertyListValue(text_));
        } else if (name == "integer") {
            if (const auto number = integerOf(text_))
                add(*number);
            else
                refuse();
        } else if ((name == "true" || name == "false") && text_.empty()) {
            add(PropertyListValue(name == "true"));
        } else if (name == "real" || name == "date" || name == "data") {
            add(PropertyListValue(PropertyListOther{name, text_}));
        } else {
            refuse();
        }
    }

    void add(PropertyListValue value) {
        if (containers_.empty()) {
            if (root_)
                refuse();
            root_ = std::move(value);
        } else if (Container& into = containers_.back(); into.isArray) {
            into.array.push_back(std::move(value));
        } else if (into.key) {
            into.dictionary.insert_or_assign(*std::exchange(into.key, std::nullopt),
                                             std::move(value));
        } else {
            refuse();
        }
    }

    std::unique_ptr<XML_ParserStruct, ParserFree> parser_;
    std::vector<Container> containers_;
    std::optional<std::string> leaf_; // the element whose text is being read
    std::string text_;
    std::optional<PropertyListValue> root_;
    int depth_ = 0;
    size_t values_ = 0;
};

bool isXmlCharacter(char character) {
    return static_cast<unsigned char>(character) >= 0x20 || character == '\t' ||
           character == '\n' || character == '\r';
}

// Writes tabs, line feeds and the names of elements as other writers of the format do.
class Writer {
public:
    bool write(const PropertyListDictionary& root) { return put(root, 0); }
    std::string xml;

private:
    bool write(const PropertyListValue& value, int depth) {
        return depth < propertyListLimits.depth &&
               std::visit([&](const auto& content) { return put(content, depth); },
                          value.storage());
    }
    void indent(int depth) { xml.append(static_cast<size_t>(depth), '\t'); }

    bool element(const char* name, std::string_view text) {
        if (!isXmlText(text))
            return false;
        xml.append("<").append(name).append(">");
        for (const char character : text) {
            if (character == '&')
                xml += "&amp;";
            else if (character == '<')
                xml += "&lt;";
            else if (character == '>')
                xml += "&gt;";
            else if (character == '\r') // a bare one would be read as a line feed
                xml += "&#13;";
            else
                xml += character;
        }
        xml.append("</").append(name).append(">\n");
        return true;
    }

    bool put(const std::string& text, int) { return element("string", text); }
    bool put(int64_t number, int) { return element("integer", std::to_string(number)); }
    bool put(uint64_t number, int) { return element("integer", std::to_string(number)); }
    bool put(bool flag, int) {
        xml += flag ? "<true/>\n" : "<false/>\n";
        return true;
    }
    bool put(const PropertyListOther& other, int) {
        return element(other.element.c_str(), other.text);
    }
    bool put(const PropertyListArray& values, int depth) {
        xml += "<array>\n";
        for (const PropertyListValue& value : values) {
            indent(depth + 1);
            if (!write(value, depth + 1))
                return false;
        }
        indent(depth);
        xml += "</array>\n";
        return true;
    }
    bool put(const PropertyListDictionary& values, int depth) {
        xml += "<dict>\n";
        for (const auto& [key, value] : values) {
            indent(depth + 1);
            if (!element("key", key))
                return false;
            indent(depth + 1);
            if (!write(value, depth + 1))
                return false;
        }
        indent(depth);
        xml += "</dict>\n";
        return true;
    }
};

} // namespace

bool isXmlText(std::string_view text) {
    using namespace std::string_view_literals;
    return isValidUtf8(text) && std::all_of(text.begin(), text.end(), isXmlCharacter) &&
           text.find("\xEF\xBF\xBE"sv) == text.npos && // U+FFFE
           text.find("\xEF\xBF\xBF"sv) == text.npos;   // U+FFFF
}

std::optional<PropertyListValue> parseXmlPropertyList(std::span<const uint8_t> bytes) {
    return Reader().read(bytes);
}

std::optional<std::string> xmlOfPropertyList(const PropertyListDictionary& root) {
    Writer writer;
    writer.xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                 "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                 "<plist version=\"1.0\">\n";
    if (!writer.write(root))
        return std::nullopt;
    writer.xml += "</plist>\n";
    return std::move(writer.xml);
}

} // namespace paperline

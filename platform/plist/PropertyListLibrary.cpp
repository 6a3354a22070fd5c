#include "platform/plist/PropertyListLibrary.h"

#include "platform/plist/PropertyListCheck.h"

#include <array>
#include <charconv>
#include <chrono>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <plist/plist.h>
#include <string_view>

namespace paperline {
namespace {

struct NodeFree {
    void operator()(void* node) const noexcept { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeFree>;
struct TextFree {
    void operator()(char* text) const noexcept { std::free(text); }
};
using OwnedText = std::unique_ptr<char, TextFree>;

// The library reads and writes reals by the locale's decimal point.
class PlainNumbers {
public:
    PlainNumbers() : plain_(::newlocale(LC_NUMERIC_MASK, "C", nullptr)) {
        if (plain_ != nullptr)
            previous_ = ::uselocale(plain_);
    }
    ~PlainNumbers() {
        if (plain_ == nullptr)
            return;
        ::uselocale(previous_);
        ::freelocale(plain_);
    }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    locale_t plain_;
    locale_t previous_ = nullptr;
};

constexpr std::chrono::sys_days reference{std::chrono::year{2001} / 1 / 1};

std::optional<double> secondsOfDate(std::string_view text) {
    std::array<int, 6> parts{};
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    for (int& part : parts) {
        const auto [stop, failure] = std::from_chars(at, end, part);
        if (failure != std::errc() || stop == end)
            return std::nullopt;
        at = stop + 1;
    }
    const std::chrono::year_month_day day{std::chrono::year(parts[0]),
                                          std::chrono::month(static_cast<unsigned>(parts[1])),
                                          std::chrono::day(static_cast<unsigned>(parts[2]))};
    if (!day.ok())
        return std::nullopt;
    const auto days = (std::chrono::sys_days(day) - reference).count();
    return static_cast<double>(days) * 86400.0 + parts[3] * 3600.0 + parts[4] * 60.0 + parts[5];
}

std::optional<std::string> textOfDate(double secondsSince2001) {
    if (!(secondsSince2001 >= firstDateSeconds && secondsSince2001 <= lastDateSeconds))
        return std::nullopt;
    const auto seconds = static_cast<int64_t>(std::floor(secondsSince2001));
    const int64_t days = (seconds < 0 ? seconds - 86399 : seconds) / 86400;
    const auto rest = static_cast<int>(seconds - days * 86400);
    const std::chrono::year_month_day day{reference + std::chrono::days(days)};
    std::array<char, 64> text;
    const int length = std::snprintf(text.data(),
                                     text.size(),
                                     "%04d-%02u-%02uT%02d:%02d:%02dZ",
                                     static_cast<int>(day.year()),
                                     static_cast<unsigned>(day.month()),
                                     static_cast<unsigned>(day.day()),
                                     rest / 3600,
                                     rest / 60 % 60,
                                     rest % 60);
    return std::string(text.data(), static_cast<size_t>(length));
}

// What stands between the element's tags in the library's own XML: the accessors of dates and
// integers tell neither a date outside 32 bits nor a number's sign.
std::string xmlContent(plist_t node, std::string_view element) {
    const Node copy(plist_copy(node));
    char* raw = nullptr;
    uint32_t length = 0;
    plist_to_xml(copy.get(), &raw, &length);
    const OwnedText owned(raw);
    const std::string_view xml(raw != nullptr ? raw : "", raw != nullptr ? length : 0);
    const std::string opening = "<" + std::string(element) + ">";
    const size_t start = xml.find(opening);
    const size_t end = xml.find("</", start == std::string_view::npos ? 0 : start);
    if (start == std::string_view::npos || end == std::string_view::npos)
        return {};
    return std::string(xml.substr(start + opening.size(), end - start - opening.size()));
}

Node leafFromXml(std::string_view element, std::string_view content) {
    std::string xml = "<plist version=\"1.0\"><";
    xml.append(element).append(">").append(content).append("</").append(element);
    xml.append("></plist>");
    plist_t node = nullptr;
    plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &node);
    return Node(node);
}

using Value = std::optional<PropertyListValue>;

Value fromNode(plist_t node, int depth);

Value fromInteger(plist_t node) {
    uint64_t number = 0;
    plist_get_uint_val(node, &number);
    const bool negative =
        number > static_cast<uint64_t>(INT64_MAX) && xmlContent(node, "integer").starts_with('-');
    if (negative || number <= static_cast<uint64_t>(INT64_MAX))
        return PropertyListValue(static_cast<int64_t>(number));
    return PropertyListValue(number);
}

Value fromText(plist_t node) {
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    const std::string_view view(text != nullptr ? text : "", text != nullptr ? length : 0);
    if (!isXmlText(view))
        return std::nullopt;
    return PropertyListValue(std::string(view));
}

Value fromData(plist_t node) {
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    if (bytes == nullptr)
        length = 0;
    return PropertyListValue(PropertyListData(bytes, bytes + length));
}

Value fromArray(plist_t node, int depth) {
    PropertyListArray values;
    plist_array_iter raw = nullptr;
    plist_array_new_iter(node, &raw);
    const std::unique_ptr<void, decltype(&std::free)> iterator(raw, &std::free);
    for (;;) {
        plist_t item = nullptr;
        plist_array_next_item(node, iterator.get(), &item);
        if (item == nullptr)
            return PropertyListValue(std::move(values));
        Value value = fromNode(item, depth + 1);
        if (!value)
            return std::nullopt;
        values.push_back(std::move(*value));
    }
}

Value fromDictionary(plist_t node, int depth) {
    PropertyListDictionary values;
    plist_dict_iter raw = nullptr;
    plist_dict_new_iter(node, &raw);
    const std::unique_ptr<void, decltype(&std::free)> iterator(raw, &std::free);
    for (;;) {
        plist_t item = nullptr;
        char* rawKey = nullptr;
        plist_dict_next_item(node, iterator.get(), &rawKey, &item);
        const OwnedText key(rawKey);
        if (item == nullptr)
            return PropertyListValue(std::move(values));
        Value value = fromNode(item, depth + 1);
        if (!value || !key || !isXmlText(key.get()))
            return std::nullopt;
        values.insert_or_assign(key.get(), std::move(*value));
    }
}

// A reference of an archive is a dictionary in XML.
Value fromUid(plist_t node) {
    uint64_t number = 0;
    plist_get_uid_val(node, &number);
    return PropertyListValue(
        PropertyListDictionary{{"CF$UID", PropertyListValue(static_cast<int64_t>(number))}});
}

Value fromNode(plist_t node, int depth) {
    if (depth > PropertyListLimits::depth)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return PropertyListValue(flag != 0);
    }
    case PLIST_UINT:
        return fromInteger(node);
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return PropertyListValue(number);
    }
    case PLIST_DATE:
        if (const auto seconds = secondsOfDate(xmlContent(node, "date")))
            return PropertyListValue(PropertyListDate{*seconds});
        return std::nullopt;
    case PLIST_STRING:
        return fromText(node);
    case PLIST_DATA:
        return fromData(node);
    case PLIST_ARRAY:
        return fromArray(node, depth);
    case PLIST_DICT:
        return fromDictionary(node, depth);
    case PLIST_UID:
        return fromUid(node);
    default:
        return std::nullopt;
    }
}

Node toNode(const PropertyListValue& value, int depth);

struct NodeMaker {
    int depth;

    Node operator()(const std::string& text) const {
        return Node(isXmlText(text) ? plist_new_string(text.c_str()) : nullptr);
    }
    // Only the library's reader keeps apart a negative number and one above 63 bits.
    Node operator()(int64_t number) const { return leafFromXml("integer", std::to_string(number)); }
    Node operator()(uint64_t number) const {
        return leafFromXml("integer", std::to_string(number));
    }
    Node operator()(bool flag) const { return Node(plist_new_bool(flag ? 1 : 0)); }
    Node operator()(double number) const { return Node(plist_new_real(number)); }
    Node operator()(const PropertyListDate& date) const {
        const std::optional<std::string> text = textOfDate(date.secondsSince2001);
        return text ? leafFromXml("date", *text) : Node();
    }
    Node operator()(const PropertyListData& data) const {
        return Node(plist_new_data(reinterpret_cast<const char*>(data.data()), data.size()));
    }
    Node operator()(const PropertyListArray& values) const {
        Node array(plist_new_array());
        for (const PropertyListValue& value : values) {
            Node item = toNode(value, depth + 1);
            if (!item)
                return nullptr;
            plist_array_append_item(array.get(), item.release());
        }
        return array;
    }
    Node operator()(const PropertyListDictionary& values) const {
        Node dictionary(plist_new_dict());
        for (const auto& [key, value] : values) {
            Node item = isXmlText(key) ? toNode(value, depth + 1) : Node();
            if (!item)
                return nullptr;
            plist_dict_set_item(dictionary.get(), key.c_str(), item.release());
        }
        return dictionary;
    }
};

Node toNode(const PropertyListValue& value, int depth) {
    if (depth >= PropertyListLimits::depth)
        return nullptr;
    return std::visit(NodeMaker{depth}, value.storage());
}

// The library writes the year 33 as "33".
void padYears(std::string& xml) {
    constexpr std::string_view opening = "<date>";
    for (size_t at = xml.find(opening); at != std::string::npos; at = xml.find(opening, at + 1)) {
        const size_t year = at + opening.size();
        const size_t dash = xml.find('-', year);
        if (dash != std::string::npos && dash - year < 4)
            xml.insert(year, 4 - (dash - year), '0');
    }
}

} // namespace

std::optional<PropertyListValue> valueFromBytes(std::span<const uint8_t> soundBytes, bool binary) {
    const PlainNumbers plain;
    const auto* bytes = reinterpret_cast<const char*>(soundBytes.data());
    const auto length = static_cast<uint32_t>(soundBytes.size());
    plist_t raw = nullptr;
    if (binary)
        plist_from_bin(bytes, length, &raw);
    else
        plist_from_xml(bytes, length, &raw);
    const Node root(raw);
    return root ? fromNode(root.get(), 0) : std::nullopt;
}

std::optional<std::string> xmlFromValue(const PropertyListValue& value) {
    const PlainNumbers plain;
    const Node root = toNode(value, 0);
    if (!root)
        return std::nullopt;
    char* raw = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &raw, &length);
    const OwnedText owned(raw);
    if (!owned)
        return std::nullopt;
    std::string xml(raw, length);
    padYears(xml);
    return xml;
}

} // namespace paperline

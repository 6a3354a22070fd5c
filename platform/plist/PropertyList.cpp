#include "platform/plist/PropertyList.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyListCheck.h"
#include "platform/plist/PropertyListLibrary.h"

#include <charconv>
#include <cmath>
#include <span>
#include <string_view>

namespace paperline {
namespace {

// The number a text starts with, as the platform reads integers: "12abc" is 12.
std::optional<int64_t> leadingInteger(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t\n\r");
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
    if (text.starts_with('+') && text.size() > 1 && text[1] != '-')
        text.remove_prefix(1);
    int64_t number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc())
        return std::nullopt;
    return number;
}

std::optional<int64_t> wholePart(double number) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(number >= -limit && number < limit))
        return std::nullopt;
    return static_cast<int64_t>(std::trunc(number));
}

} // namespace

std::optional<int64_t> PropertyListValue::asInteger() const {
    if (const auto* number = std::get_if<int64_t>(&value_))
        return *number;
    if (const auto* number = std::get_if<uint64_t>(&value_))
        return *number <= static_cast<uint64_t>(INT64_MAX)
                   ? std::optional(static_cast<int64_t>(*number))
                   : std::nullopt;
    if (const auto* flag = std::get_if<bool>(&value_))
        return *flag ? 1 : 0;
    if (const auto* number = std::get_if<double>(&value_))
        return wholePart(*number);
    if (const std::string* text = asString())
        return leadingInteger(*text);
    return std::nullopt;
}

std::optional<PropertyListDictionary> parsePropertyList(const std::vector<uint8_t>& bytes) {
    std::span<const uint8_t> content(bytes);
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const bool binary = text.starts_with("bplist00");
    constexpr std::string_view mark = "\xEF\xBB\xBF"; // the library does not know it
    if (text.starts_with(mark)) {
        text.remove_prefix(mark.size());
        content = content.subspan(mark.size());
    }
    if (binary ? !isSoundBinaryPropertyList(content) : !isSoundXmlPropertyList(text))
        return std::nullopt;
    const std::optional<PropertyListValue> value = valueFromBytes(content, binary);
    const PropertyListDictionary* root = value ? value->asDictionary() : nullptr;
    return root != nullptr ? std::optional(*root) : std::nullopt;
}

PropertyListFile readPropertyList(const std::string& path) {
    if (!fileExists(path))
        return {};
    const auto bytes = readFile(path, PropertyListLimits::fileBytes);
    std::optional<PropertyListDictionary> root =
        bytes ? parsePropertyList(*bytes) : std::optional<PropertyListDictionary>();
    if (!root)
        return {PropertyListStatus::damaged, {}};
    return {PropertyListStatus::read, std::move(*root)};
}

std::optional<std::vector<uint8_t>> serialisePropertyList(const PropertyListDictionary& root) {
    const std::optional<std::string> xml = xmlFromValue(PropertyListValue(root));
    if (!xml)
        return std::nullopt;
    return std::vector<uint8_t>(xml->begin(), xml->end());
}

bool writePropertyListAtomically(const std::string& path, const PropertyListDictionary& root) {
    const auto bytes = serialisePropertyList(root);
    return bytes && writeFileAtomically(path, *bytes);
}

const PropertyListValue* find(const PropertyListDictionary& dictionary, const std::string& key) {
    const auto found = dictionary.find(key);
    return found != dictionary.end() ? &found->second : nullptr;
}

std::string textUnder(const PropertyListDictionary& dictionary, const std::string& key) {
    const PropertyListValue* value = find(dictionary, key);
    const std::string* text = value != nullptr ? value->asString() : nullptr;
    return text != nullptr ? *text : std::string();
}

} // namespace paperline

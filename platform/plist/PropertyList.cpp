#include "platform/plist/PropertyList.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyListForms.h"

#include <charconv>
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

std::optional<int64_t> wholePart(std::string_view real) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    double number = 0;
    if (std::from_chars(real.data(), real.data() + real.size(), number).ec != std::errc() ||
        !(number >= -limit && number < limit))
        return std::nullopt;
    return static_cast<int64_t>(number);
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
    if (const auto* other = std::get_if<PropertyListOther>(&value_))
        return other->element == "real" ? wholePart(other->text) : std::nullopt;
    if (const std::string* text = asString())
        return leadingInteger(*text);
    return std::nullopt;
}

std::optional<PropertyListDictionary> parsePropertyList(std::span<const uint8_t> bytes) {
    const std::string_view start(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::optional<PropertyListValue> root = start.starts_with("bplist00")
                                                ? parseBinaryPropertyList(bytes)
                                                : parseXmlPropertyList(bytes);
    if (!root || root->asDictionary() == nullptr)
        return std::nullopt;
    return *root->asDictionary();
}

PropertyListFile readPropertyList(const std::string& path) {
    if (!fileExists(path))
        return {};
    const auto bytes = readFile(path, propertyListLimits.fileBytes);
    std::optional<PropertyListDictionary> root =
        bytes ? parsePropertyList(*bytes) : std::optional<PropertyListDictionary>();
    if (!root)
        return {PropertyListStatus::damaged, {}};
    return {PropertyListStatus::read, std::move(*root)};
}

std::optional<std::vector<uint8_t>> serialisePropertyList(const PropertyListDictionary& root) {
    const std::optional<std::string> xml = xmlOfPropertyList(root);
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

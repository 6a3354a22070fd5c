// Property lists: dictionaries read from XML or binary files and written as XML.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace paperline {

class PropertyListValue;
using PropertyListArray = std::vector<PropertyListValue>;
using PropertyListDictionary = std::map<std::string, PropertyListValue>;

struct PropertyListDate {
    double secondsSince2001 = 0; // 2001-01-01T00:00:00Z
    bool operator==(const PropertyListDate&) const = default;
};
using PropertyListData = std::vector<uint8_t>;

// One value of any type that a property list can hold. Values of types this program has no use for
// survive a read and a write unchanged.
class PropertyListValue {
public:
    using Storage = std::variant<std::string,
                                 int64_t,
                                 uint64_t,
                                 bool,
                                 double,
                                 PropertyListDate,
                                 PropertyListData,
                                 PropertyListArray,
                                 PropertyListDictionary>;

    PropertyListValue() : value_(std::string()) {}
    PropertyListValue(Storage value) : value_(std::move(value)) {}
    PropertyListValue(const char* text) : value_(std::string(text)) {}

    const Storage& storage() const { return value_; }
    // The value as the type asked for; nothing for another type. A number stored as real or boolean
    // counts as integer, and a string holding a number does too ("3" is 3), as the platform's
    // integer reading does.
    std::optional<int64_t> asInteger() const;
    const std::string* asString() const { return std::get_if<std::string>(&value_); }
    const PropertyListDictionary* asDictionary() const {
        return std::get_if<PropertyListDictionary>(&value_);
    }
    bool operator==(const PropertyListValue&) const = default;

private:
    Storage value_;
};

enum class PropertyListStatus { read, missing, damaged };
struct PropertyListFile {
    PropertyListStatus status = PropertyListStatus::missing;
    PropertyListDictionary root; // empty unless read
};

// damaged: the file is there but cannot be read or parsed, or its root is no dictionary.
PropertyListFile readPropertyList(const std::string& path);
std::optional<PropertyListDictionary> parsePropertyList(const std::vector<uint8_t>& bytes);
// XML form; nothing when a text is not valid UTF-8 or holds a character that XML cannot.
std::optional<std::vector<uint8_t>> serialisePropertyList(const PropertyListDictionary& root);
[[nodiscard]] bool writePropertyListAtomically(const std::string& path,
                                               const PropertyListDictionary& root);

// The entry under the key, or nothing.
const PropertyListValue* find(const PropertyListDictionary& dictionary, const std::string& key);
// The text under the key; empty without one.
std::string textUnder(const PropertyListDictionary& dictionary, const std::string& key);

} // namespace paperline

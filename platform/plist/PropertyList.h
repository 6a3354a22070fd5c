// Property lists: dictionaries read from XML or binary files and written as XML.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace paperline {

class PropertyListValue;
using PropertyListArray = std::vector<PropertyListValue>;
using PropertyListDictionary = std::map<std::string, PropertyListValue>;

// A real, a date or a datum as XML writes it: <real>0.25</real>. This program has no use for them,
// so that they only survive a read and a write.
struct PropertyListOther {
    std::string element; // "real", "date" or "data"
    std::string text;
    bool operator==(const PropertyListOther&) const = default;
};

class PropertyListValue {
public:
    using Storage = std::variant<std::string,
                                 int64_t,
                                 uint64_t,
                                 bool,
                                 PropertyListOther,
                                 PropertyListArray,
                                 PropertyListDictionary>;

    PropertyListValue() : value_(std::string()) {}
    PropertyListValue(Storage value) : value_(std::move(value)) {}
    PropertyListValue(const char* text) : value_(std::string(text)) {}

    const Storage& storage() const { return value_; }
    // Nothing for a value without a number. A real is cut to its whole part, a boolean is 0 or 1,
    // and of a string the number at its start counts: "12abc" is 12.
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
// XML in an encoding that it declares or marks, or the binary form "bplist00". Nothing for damaged
// bytes, for more than 64 levels or 200,000 values, and for XML that declares entities.
std::optional<PropertyListDictionary> parsePropertyList(std::span<const uint8_t> bytes);
// XML form; nothing when a text is not valid UTF-8 or holds a character that XML cannot.
std::optional<std::vector<uint8_t>> serialisePropertyList(const PropertyListDictionary& root);
[[nodiscard]] bool writePropertyListAtomically(const std::string& path,
                                               const PropertyListDictionary& root);

// The entry under the key, or nothing.
const PropertyListValue* find(const PropertyListDictionary& dictionary, const std::string& key);
// The text under the key; empty without one.
std::string textUnder(const PropertyListDictionary& dictionary, const std::string& key);

} // namespace paperline

// The two forms of a property list, and what bounds them.
#pragma once

#include "platform/plist/PropertyList.h"

#include <string_view>

namespace paperline {

// Far above any list that this program meets, and far below what exhausts the stack or the memory.
inline constexpr struct {
    size_t fileBytes = 16U << 20U;
    int depth = 64;
    size_t values = 200'000;          // an object of the binary form counts at every use
    size_t payloadBytes = 64U << 20U; // of texts and data, counted likewise
} propertyListLimits;

std::optional<PropertyListValue> parseXmlPropertyList(std::span<const uint8_t> bytes);
std::optional<PropertyListValue> parseBinaryPropertyList(std::span<const uint8_t> bytes);

// Valid UTF-8 without characters that XML cannot hold.
bool isXmlText(std::string_view text);

// Nothing when a text is not valid UTF-8 or holds a character that XML cannot, or the nesting is
// too deep.
std::optional<std::string> xmlOfPropertyList(const PropertyListDictionary& root);

} // namespace paperline

// The one place that knows the property list library.
#pragma once

#include "platform/plist/PropertyList.h"

#include <optional>
#include <span>
#include <string>

namespace paperline {

// Bytes that PropertyListCheck found sound, as a value. Nothing when the library or a look at the
// types says otherwise.
std::optional<PropertyListValue> valueFromBytes(std::span<const uint8_t> soundBytes, bool binary);

// XML text; nothing when a text or a date cannot be written or the nesting is too deep.
std::optional<std::string> xmlFromValue(const PropertyListValue& value);

} // namespace paperline

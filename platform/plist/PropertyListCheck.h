// Looks at the bytes of a property list before the library does: it takes some damage for content
// and ends the process on some other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace paperline {

// Far above any list this program meets; below what could exhaust stack or memory.
struct PropertyListLimits {
    static constexpr size_t fileBytes = 16U << 20U;
    static constexpr int depth = 64;
    static constexpr size_t values = 200'000;          // shared ones counted at every use
    static constexpr size_t payloadBytes = 64U << 20U; // of texts and data, counted likewise
};

// Valid UTF-8 without characters that XML cannot hold.
bool isXmlText(std::string_view text);

// A well-formed XML property list whose every number, date and datum is written as the format has
// it. The text starts behind a byte-order mark.
bool isSoundXmlPropertyList(std::string_view text);

// A binary property list ("bplist00") whose every reference, length and text is sound and whose
// numbers and dates have an XML form.
bool isSoundBinaryPropertyList(std::span<const uint8_t> bytes);

// "2026-01-31T23:59:59Z" with a day that exists.
bool isPropertyListDate(std::string_view text);
// The moments that this form can write: years 1 to 9999, in seconds since 2001.
inline constexpr double firstDateSeconds = -63113904000.0;
inline constexpr double lastDateSeconds = 252423993599.0;

} // namespace paperline

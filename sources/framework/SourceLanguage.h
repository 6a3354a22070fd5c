// The language in which a data source speaks to people. The application that uses the source keeps
// it in the bundle: Versions/A/cvscan.plist, "Default", "Language", an index of the application's
// language table (0 is English).
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace paperline::sources {

// The index that the bundle's file names now; 0 without a file or without an index in it.
[[nodiscard]] int32_t languageOfBundle(const std::string& bundlePath);

// The same for the file's bytes.
[[nodiscard]] int32_t languageOfPropertyList(std::span<const uint8_t> bytes);

// The sentence for a condition code (TWCC_) in that language; null where there is none and the
// source's own English words stay.
[[nodiscard]] const char* localizedConditionText(int32_t language, uint16_t conditionCode);

} // namespace paperline::sources

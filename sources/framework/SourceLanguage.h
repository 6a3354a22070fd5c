// The language in which a data source speaks to people. The application that uses the source keeps
// it in the bundle: Versions/A/cvscan.plist, "Default", "Language", an index of the application's
// language table (0 is English).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace paperline::sources {

// The index that the bundle's file names now; 0 without a file or without an index in it. Property
// lists in XML are understood, which is what the application writes.
[[nodiscard]] int32_t languageOfBundle(const std::string& bundlePath);

// The same of the file's text.
[[nodiscard]] int32_t languageOfPropertyList(std::string_view xml);

// The sentence for a condition code (TWCC_) in that language; null where there is none and the
// source's own English words stay.
[[nodiscard]] const char* localizedConditionText(int32_t language, uint16_t conditionCode);

} // namespace paperline::sources

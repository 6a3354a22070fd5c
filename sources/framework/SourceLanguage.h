// The language of a data source's messages. The application writes it into the bundle:
// Versions/A/cvscan.plist, "Default", "Language", an index of its language table (0 is English).
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace paperline::sources {

// 0 without the file or the entry.
[[nodiscard]] int32_t languageOfBundle(const std::string& bundlePath);

// The same for the file's bytes.
[[nodiscard]] int32_t languageOfPropertyList(std::span<const uint8_t> bytes);

// The sentence for a condition code (TWCC_) in that language; null for English and where there is
// none.
[[nodiscard]] const char* localizedConditionText(int32_t language, uint16_t conditionCode);

} // namespace paperline::sources

// What the software scanner's options may be, and texts turned into them.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <string>
#include <vector>

namespace paperline::sources {

struct NumberRange {
    double minimum, maximum, step; // step 0: any value between
};

inline constexpr NumberRange resolutionRange{50, 1200, 1};
inline constexpr NumberRange countRange{1, 10000, 1};
inline constexpr NumberRange delayRange{0, 60000, 1};
inline constexpr NumberRange widthRange{20, 330, 0};
inline constexpr NumberRange heightRange{20, 500, 0};

const std::vector<std::string>& sourceNames(); // the flatbed first
const std::vector<std::string>& modeNames();

struct OptionName {
    const char* name;
    const char* title;
    const char* unit;
};

OptionDescriptor choiceOption(const char* name,
                              const char* title,
                              const std::string& value,
                              const std::vector<std::string>& choices);
OptionDescriptor numberOption(const OptionName& name, double value, const NumberRange& range);
OptionDescriptor textOption(const char* name, const char* title, const std::string& value);

// False, and nothing changed, when the text is not one of them. Numbers are written with a point,
// whatever the locale.
[[nodiscard]] bool
takeChoice(const std::string& text, const std::vector<std::string>& choices, std::string& value);
[[nodiscard]] bool takeNumber(const std::string& text, const NumberRange& range, double& value);
[[nodiscard]] bool takeWhole(const std::string& text, const NumberRange& range, int& value);

} // namespace paperline::sources

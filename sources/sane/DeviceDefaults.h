// A SANE scanner's default settings: colour, else grey, 8 bits a sample, 300 dots per inch or the
// nearest to it, the whole scan area.
#pragma once

#include "sources/sane/SaneScanner.h"

#include <optional>
#include <string>
#include <vector>

namespace paperline::sources {

inline constexpr double preferredDpi = 300;

// The best choice of the option "mode"; nothing when none is colour or grey.
std::optional<std::string> preferredMode(const std::vector<std::string>& choices);

// The nearest value in the option's list or range; nothing for an option without either.
std::optional<std::string> nearestValue(const OptionDescriptor& option, double wish);

// The option of that name if it is active and may be set, else null.
const OptionDescriptor* settableOption(const std::vector<OptionDescriptor>& options,
                                       const std::string& name);

// A default that the scanner refuses is skipped.
void applyDefaults(SaneScanner& scanner);
void applyWholeArea(SaneScanner& scanner);

// Dots per inch; 0 when the scanner does not say.
struct PageResolution {
    double horizontalDpi = 0, verticalDpi = 0;
};
PageResolution pageResolution(const std::vector<OptionDescriptor>& options);

// Whether the option "source" is set to a document feeder.
bool usesFeeder(const std::vector<OptionDescriptor>& options);

} // namespace paperline::sources

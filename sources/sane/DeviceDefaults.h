// How a SANE scanner is set when nobody says otherwise: colour where it is offered, else grey, 8
// bits a sample, 300 dots per inch or what comes nearest, the whole scan area.
#pragma once

#include "sources/sane/SaneScanner.h"

#include <optional>
#include <string>
#include <vector>

namespace paperline::sources {

inline constexpr double preferredDpi = 300;

// The best of a "mode" option's choices; nothing when none is colour or grey.
std::optional<std::string> preferredMode(const std::vector<std::string>& choices);

// The value nearest to the wish that the option's list or range allows, as text; nothing for an
// option without either.
std::optional<std::string> nearestValue(const OptionDescriptor& option, double wish);

// The option of that name if it is active, has a name and may be set.
const OptionDescriptor* settableOption(const std::vector<OptionDescriptor>& options,
                                       const std::string& name);

// Scanners that do not take a default keep their own.
void applyDefaults(SaneScanner& scanner);
void applyWholeArea(SaneScanner& scanner);

// Dots per inch as the options stand; 0 when the scanner does not say.
struct PageResolution {
    double horizontalDpi = 0, verticalDpi = 0;
};
PageResolution pageResolution(const std::vector<OptionDescriptor>& options);

// The "source" option's value names a document feeder.
bool usesFeeder(const std::vector<OptionDescriptor>& options);

} // namespace paperline::sources

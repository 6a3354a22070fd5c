#include "sources/sane/DeviceDefaults.h"

#include "sources/framework/DeviceOptions.h"
#include "sources/framework/LocaleFreeText.h"
#include "sources/sane/SaneValues.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace paperline::sources {

namespace {

// Dithered, or with more than 8 bits a sample, which would be reduced to 8 afterwards.
bool isLesserMode(const std::string& mode) {
    constexpr std::array marks{
        "30", "36", "42", "48", "16 bit", "16bit", "16-bit", "lineart", "halftone"};
    return std::any_of(marks.begin(), marks.end(), [&](const char* mark) {
        return containsIgnoringCase(mode, mark);
    });
}

void setDefault(SaneScanner& scanner,
                const OptionDescriptor* option,
                const std::optional<std::string>& value) {
    if (option != nullptr && value && option->value != *value)
        (void)scanner.setOption(option->name, *value);
}

void setPreferredMode(SaneScanner& scanner) {
    const std::vector<OptionDescriptor> options = scanner.options();
    if (const OptionDescriptor* mode = settableOption(options, "mode"))
        setDefault(scanner, mode, preferredMode(mode->choices));
}

void setNearest(SaneScanner& scanner, const std::string& name, double wish) {
    const std::vector<OptionDescriptor> options = scanner.options();
    if (const OptionDescriptor* option = settableOption(options, name))
        setDefault(scanner, option, nearestValue(*option, wish));
}

void setEightBits(SaneScanner& scanner) {
    const std::vector<OptionDescriptor> options = scanner.options();
    const OptionDescriptor* depth = settableOption(options, "depth");
    if (depth != nullptr &&
        std::find(depth->choices.begin(), depth->choices.end(), "8") != depth->choices.end())
        setDefault(scanner, depth, "8");
}

} // namespace

const OptionDescriptor* settableOption(const std::vector<OptionDescriptor>& options,
                                       const std::string& name) {
    const OptionDescriptor* option = findOption(options, name);
    return option != nullptr && option->active && option->settable ? option : nullptr;
}

std::optional<std::string> preferredMode(const std::vector<std::string>& choices) {
    struct Wish {
        const char* text;
        bool whole; // else any part of the choice
    };
    for (const auto& [text, whole] : {Wish{"Color", true},
                                      {"Colour", true},
                                      {"24bit Color", true},
                                      {"color", false},
                                      {"colour", false},
                                      {"Gray", true},
                                      {"Grayscale", true},
                                      {"gray", false},
                                      {"grey", false}})
        for (const std::string& choice : choices)
            if (whole ? equalsIgnoringCase(choice, text)
                      : containsIgnoringCase(choice, text) && !isLesserMode(choice))
                return choice;
    return std::nullopt;
}

std::optional<std::string> nearestValue(const OptionDescriptor& option, double wish) {
    if (!option.choices.empty())
        return *std::min_element(option.choices.begin(),
                                 option.choices.end(),
                                 [wish](const auto& one, const auto& other) {
                                     return std::abs(leadingNumber(one) - wish) <
                                            std::abs(leadingNumber(other) - wish);
                                 });
    if (!option.hasRange || option.minimum > option.maximum)
        return std::nullopt;
    double value = std::clamp(wish, option.minimum, option.maximum);
    if (option.step > 0)
        value = option.minimum + std::round((value - option.minimum) / option.step) * option.step;
    if (value > option.maximum)
        value -= option.step;
    const bool isFixed = option.kind == OptionKind::fixed;
    if (std::abs(value) > 32767)
        return std::nullopt;
    return saneWordText(static_cast<int32_t>(std::lround(isFixed ? value * saneFixedScale : value)),
                        isFixed);
}

void applyDefaults(SaneScanner& scanner) {
    // In this order: each may change the choices of the next.
    setPreferredMode(scanner);
    setEightBits(scanner);
    for (const char* name : {"resolution", "x-resolution", "y-resolution"})
        setNearest(scanner, name, preferredDpi);
    applyWholeArea(scanner);
}

void applyWholeArea(SaneScanner& scanner) {
    constexpr double edge = 32767; // the limit of fixed-point numbers
    setNearest(scanner, "tl-x", -edge);
    setNearest(scanner, "tl-y", -edge);
    setNearest(scanner, "br-x", edge);
    setNearest(scanner, "br-y", edge);
}

PageResolution pageResolution(const std::vector<OptionDescriptor>& options) {
    const auto valueOf = [&](const char* name) {
        const OptionDescriptor* option = findOption(options, name);
        return option == nullptr || !option->active ? 0
                                                    : std::max(0.0, leadingNumber(option->value));
    };
    PageResolution resolution;
    resolution.horizontalDpi = valueOf("x-resolution");
    if (resolution.horizontalDpi == 0)
        resolution.horizontalDpi = valueOf("resolution");
    resolution.verticalDpi = valueOf("y-resolution");
    if (resolution.verticalDpi == 0)
        resolution.verticalDpi = resolution.horizontalDpi;
    return resolution;
}

bool usesFeeder(const std::vector<OptionDescriptor>& options) {
    const OptionDescriptor* source = findOption(options, "source");
    return source != nullptr && source->active && isFeederName(source->value);
}

} // namespace paperline::sources

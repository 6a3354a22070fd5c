#include "sources/framework/DeviceOptions.h"

#include "sources/framework/LocaleFreeText.h"
#include "twain/records/TwainConstants.h"

#include <algorithm>
#include <array>

namespace paperline::sources {

namespace {

bool containsAny(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [&](std::string_view word) {
        return containsIgnoringCase(text, word);
    });
}

std::optional<int16_t> pixelTypeOfMode(const std::string& mode) {
    if (containsAny(mode, {"infrared"}))
        return std::nullopt;
    if (containsAny(mode, {"color", "colour", "rgb"}))
        return twain::TWPT_RGB;
    if (containsAny(mode, {"gray", "grey"}))
        return twain::TWPT_GRAY;
    if (containsAny(mode, {"lineart", "black", "binary", "halftone", "mono"}))
        return twain::TWPT_BW;
    return std::nullopt;
}

} // namespace

bool isFeederName(std::string_view source) {
    return containsAny(source, {"adf", "feeder", "duplex"});
}

const OptionDescriptor* DeviceOptions::find(std::string_view name) const {
    const OptionDescriptor* option = findOption(options_, name);
    return option != nullptr && option->active ? option : nullptr;
}

ScanStatus DeviceOptions::set(const std::string& name, const std::string& value) {
    const ScanStatus status = feed_.setOption(name, value);
    refresh();
    return status;
}

std::vector<int16_t> DeviceOptions::pixelTypes() const {
    std::vector<int16_t> types;
    if (const auto* mode = find("mode")) {
        for (const std::string& choice : mode->choices) {
            const auto type = pixelTypeOfMode(choice);
            if (type && std::find(types.begin(), types.end(), *type) == types.end())
                types.push_back(*type);
        }
    }
    if (types.empty())
        types.push_back(pixelType());
    return types;
}

int16_t DeviceOptions::pixelType() const {
    const auto* mode = find("mode");
    const auto type = mode != nullptr ? pixelTypeOfMode(mode->value) : std::nullopt;
    return type.value_or(twain::TWPT_RGB);
}

ScanStatus DeviceOptions::setPixelType(int16_t wanted) {
    if (pixelType() == wanted)
        return ScanStatus::good;
    if (const auto* mode = find("mode"))
        for (const std::string& choice : mode->choices)
            if (pixelTypeOfMode(choice) == wanted)
                return set("mode", choice);
    return ScanStatus::invalid;
}

bool DeviceOptions::hasFlatbed() const {
    const auto* source = find("source");
    if (source == nullptr || source->choices.empty())
        return true;
    return !std::all_of(source->choices.begin(), source->choices.end(), isFeederName);
}

bool DeviceOptions::hasFeeder() const {
    const auto* source = find("source");
    return source != nullptr &&
           std::any_of(source->choices.begin(), source->choices.end(), isFeederName);
}

bool DeviceOptions::usesFeeder() const {
    const auto* source = find("source");
    return source != nullptr && isFeederName(source->value);
}

ScanStatus DeviceOptions::setUsesFeeder(bool feeder) {
    if (usesFeeder() == feeder)
        return ScanStatus::good;
    if (const auto* source = find("source"))
        for (const std::string& choice : source->choices)
            if (isFeederName(choice) == feeder)
                return set("source", choice);
    return ScanStatus::invalid;
}

const OptionDescriptor* DeviceOptions::resolutionOption(Axis axis) const {
    const auto* own = find(axis == Axis::horizontal ? "x-resolution" : "y-resolution");
    return own != nullptr ? own : find("resolution");
}

ResolutionChoices DeviceOptions::resolutions(Axis axis) const {
    ResolutionChoices choices;
    const auto* option = resolutionOption(axis);
    if (option == nullptr)
        return choices;
    for (const std::string& choice : option->choices)
        choices.dpi.push_back(leadingNumber(choice));
    choices.hasRange = option->hasRange;
    choices.minimum = option->minimum;
    choices.maximum = option->maximum;
    choices.step = option->step;
    return choices;
}

double DeviceOptions::resolution(Axis axis) const {
    const auto* option = resolutionOption(axis);
    return option != nullptr ? leadingNumber(option->value) : 0;
}

ScanStatus DeviceOptions::setResolution(Axis axis, double dpi) {
    const auto* option = resolutionOption(axis);
    if (option == nullptr)
        return ScanStatus::unsupported;
    return set(option->name, decimalText(dpi));
}

PaperFrame DeviceOptions::frame() const {
    auto inches = [&](std::string_view name, double fallback) {
        const auto* option = find(name);
        return option != nullptr ? leadingNumber(option->value) / millimetresPerInch : fallback;
    };
    PaperFrame frame;
    frame.left = inches("tl-x", 0);
    frame.top = inches("tl-y", 0);
    frame.right = inches("br-x", inches("width", physicalInches(Axis::horizontal)));
    frame.bottom = inches("br-y", inches("height", physicalInches(Axis::vertical)));
    return frame;
}

ScanStatus DeviceOptions::setLength(std::string_view name, double inches) {
    if (find(name) == nullptr)
        return ScanStatus::good;
    return set(std::string(name), decimalText(inches * millimetresPerInch));
}

ScanStatus DeviceOptions::setFrame(const PaperFrame& frame) {
    const std::array<std::pair<std::string_view, double>, 6> lengths{{
        {"tl-x", frame.left},
        {"tl-y", frame.top},
        {"br-x", frame.right},
        {"br-y", frame.bottom},
        {"width", frame.right - frame.left},
        {"height", frame.bottom - frame.top},
    }};
    for (const auto& [name, inches] : lengths)
        if (const ScanStatus status = setLength(name, inches); status != ScanStatus::good)
            return status;
    return ScanStatus::good;
}

double DeviceOptions::physicalInches(Axis axis) const {
    const bool horizontal = axis == Axis::horizontal;
    for (const char* name : {horizontal ? "br-x" : "br-y", horizontal ? "width" : "height"})
        if (const auto* option = find(name); option != nullptr && option->hasRange)
            return option->maximum / millimetresPerInch;
    return (horizontal ? 210 : 297) / millimetresPerInch;
}

} // namespace paperline::sources

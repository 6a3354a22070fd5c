#include "sources/worker/OptionSettings.h"

#include <cstdio>

namespace paperline::sources {

namespace {

// On failure `errorText` names the option and the reason.
ScanStatus applySetting(ScanDevice& device, const OptionSetting& setting, std::string& errorText) {
    const ScanStatus status = device.setOption(setting.name, setting.value);
    if (status == ScanStatus::good)
        return status;
    if (findOption(device.options(), setting.name) == nullptr) {
        errorText = "There is no option \"" + setting.name + "\".";
        return ScanStatus::invalid;
    }
    errorText = "The option \"" + setting.name + "\" does not take \"" + setting.value + "\".";
    if (const std::string reason = device.errorText(); !reason.empty())
        errorText += " " + reason;
    return status;
}

} // namespace

ScanStatus
applyOptionSettings(ScanDevice& device, const std::string& product, std::string& errorText) {
    for (const OptionSetting& setting : storedOptions(product)) {
        std::string reason;
        if (applySetting(device, setting, reason) != ScanStatus::good)
            std::fprintf(
                stderr, "%s: stored option left out: %s\n", product.c_str(), reason.c_str());
    }
    for (const OptionSetting& setting : scanOptions()) {
        const ScanStatus status = applySetting(device, setting, errorText);
        if (status != ScanStatus::good)
            return status;
    }
    return ScanStatus::good;
}

} // namespace paperline::sources

#include "sources/worker/OptionSettings.h"

#include "twain/abi/DataSourceFolders.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace paperline::sources {

namespace {

std::string_view withoutBlanks(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

// Sets one option; on failure says in words which one and why.
ScanStatus applySetting(ScanDevice& device, const OptionSetting& setting, std::string& errorText) {
    const ScanStatus status = device.setOption(setting.name, setting.value);
    if (status == ScanStatus::good)
        return status;
    const std::vector<OptionDescriptor> options = device.options();
    const bool known = std::any_of(options.begin(), options.end(), [&](const auto& option) {
        return option.name == setting.name;
    });
    if (!known) {
        errorText = "There is no option \"" + setting.name + "\".";
        return ScanStatus::invalid;
    }
    errorText = "The option \"" + setting.name + "\" does not take \"" + setting.value + "\".";
    if (const std::string reason = device.errorText(); !reason.empty())
        errorText += " " + reason;
    return status;
}

} // namespace

std::vector<OptionSetting> parseOptionSettings(std::string_view lines) {
    std::vector<OptionSetting> settings;
    while (!lines.empty()) {
        const size_t end = std::min(lines.find('\n'), lines.size());
        std::string_view line = lines.substr(0, end);
        lines.remove_prefix(std::min(end + 1, lines.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        const size_t equals = std::min(line.find('='), line.size());
        const std::string_view name = withoutBlanks(line.substr(0, equals));
        if (withoutBlanks(line).empty() || name.starts_with('#'))
            continue;
        const std::string_view value = line.substr(std::min(equals + 1, line.size()));
        settings.push_back({std::string(name), std::string(value)});
    }
    return settings;
}

std::string storedOptionsPath(const std::string& product) {
    const std::string folder = twain::abi::userDataFolder();
    if (folder.empty() || product.empty())
        return {};
    std::string name = product;
    std::replace(name.begin(), name.end(), '/', '_');
    return folder + "/Device Options/" + name + ".conf";
}

ScanStatus
applyOptionSettings(ScanDevice& device, const std::string& product, std::string& errorText) {
    if (std::ifstream file(storedOptionsPath(product)); file) {
        std::ostringstream lines;
        lines << file.rdbuf();
        for (const OptionSetting& setting : parseOptionSettings(lines.str())) {
            std::string reason;
            if (applySetting(device, setting, reason) != ScanStatus::good)
                std::fprintf(
                    stderr, "%s: stored option left out: %s\n", product.c_str(), reason.c_str());
        }
    }
    const char* given = std::getenv("PAPERLINE_SOURCE_OPTIONS");
    for (const OptionSetting& setting : parseOptionSettings(given != nullptr ? given : "")) {
        const ScanStatus status = applySetting(device, setting, errorText);
        if (status != ScanStatus::good)
            return status;
    }
    return ScanStatus::good;
}

} // namespace paperline::sources

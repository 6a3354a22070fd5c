#include "sources/framework/OptionLines.h"

#include "platform/files/FileContent.h"
#include "platform/places/StandardFolders.h"
#include "sources/framework/LocaleFreeText.h"

#include <algorithm>
#include <cstdlib>

namespace paperline::sources {

std::vector<OptionSetting> parseOptionSettings(std::string_view lines) {
    std::vector<OptionSetting> settings;
    while (!lines.empty()) {
        std::string_view line = takePart(lines, '\n');
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (trimmed(line).empty() || trimmed(line).starts_with('#'))
            continue;
        const std::string_view name = trimmed(takePart(line, '='));
        settings.push_back({std::string(name), std::string(line)});
    }
    return settings;
}

std::string storedOptionsPath(const std::string& product) {
    const std::string folder = userDataFolder();
    if (folder.empty() || product.empty())
        return {};
    std::string name = product;
    std::replace(name.begin(), name.end(), '/', '_');
    return folder + "/Device Options/" + name + ".conf";
}

std::vector<OptionSetting> storedOptions(const std::string& product) {
    const auto text = readTextFile(storedOptionsPath(product), maximumConfigurationBytes);
    return text ? parseOptionSettings(*text) : std::vector<OptionSetting>{};
}

std::vector<OptionSetting> scanOptions() {
    const char* text = std::getenv("PAPERLINE_SOURCE_OPTIONS");
    return text != nullptr ? parseOptionSettings(text) : std::vector<OptionSetting>{};
}

} // namespace paperline::sources

#include "sources/framework/OptionLines.h"

#include "platform/files/FileContent.h"
#include "platform/places/StandardFolders.h"

#include <algorithm>
#include <cstdlib>

namespace paperline::sources {

namespace {

std::string_view withoutBlanks(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
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

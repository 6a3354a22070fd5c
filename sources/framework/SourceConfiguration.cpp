#include "sources/framework/SourceConfiguration.h"

#include "platform/files/FileContent.h"
#include "sources/framework/OptionLines.h"

#include <map>

namespace paperline::sources {

namespace {

std::string fromBundle(const std::string& bundlePath, const std::string& path) {
    if (path.empty() || path.front() == '/')
        return path;
    return bundlePath + "/" + path;
}

} // namespace

std::optional<SourceConfiguration> readSourceConfiguration(const std::string& bundlePath) {
    const auto text =
        readTextFile(bundlePath + "/Versions/A/Resources/source.conf", maximumConfigurationBytes);
    if (!text)
        return std::nullopt;
    std::map<std::string, std::string> values;
    for (OptionSetting& line : parseOptionSettings(*text))
        values[line.name] = std::move(line.value);

    SourceConfiguration configuration;
    configuration.bundlePath = bundlePath;
    std::string worker = values["worker"];
    if (!worker.empty() && worker.find('/') == std::string::npos)
        worker = values["helpers"] + "/" + worker;
    configuration.worker = fromBundle(bundlePath, worker);
    configuration.device = values["device"];
    configuration.product = values["product"];
    configuration.manufacturer = values["manufacturer"];
    configuration.family = values["family"];
    if (configuration.product.empty())
        return std::nullopt;
    return configuration;
}

} // namespace paperline::sources

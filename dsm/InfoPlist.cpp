#include "dsm/InfoPlist.h"

#include "platform/files/FileContent.h"
#include "platform/plist/PropertyList.h"

namespace paperline::dsm {
namespace {

bool saysYes(const PropertyListValue& value) {
    return value.asString() != nullptr ? *value.asString() == "YES" || *value.asString() == "true"
                                       : value.asInteger() == 1;
}

bool isPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.size() < 256 &&
           name.find('/') == std::string::npos;
}

} // namespace

std::optional<BundleInfo> parseBundleInfo(std::span<const uint8_t> propertyList) {
    const std::optional<PropertyListDictionary> root = parsePropertyList(propertyList);
    if (!root)
        return std::nullopt;
    const PropertyListValue* executable = find(*root, "CFBundleExecutable");
    if (executable == nullptr || executable->asString() == nullptr ||
        !isPlainFileName(*executable->asString()))
        return std::nullopt;
    const PropertyListValue* fallback = find(*root, "PaperlineFallback");
    return BundleInfo{*executable->asString(), fallback != nullptr && saysYes(*fallback)};
}

std::optional<BundleInfo> readBundleInfo(const std::string& path) {
    const auto bytes = readFile(path, largestInfoPlistBytes);
    return bytes ? parseBundleInfo(*bytes) : std::nullopt;
}

} // namespace paperline::dsm

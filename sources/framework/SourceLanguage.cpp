#include "sources/framework/SourceLanguage.h"

#include "platform/files/FileContent.h"
#include "platform/plist/PropertyList.h"

namespace paperline::sources {

int32_t languageOfPropertyList(std::span<const uint8_t> bytes) {
    const std::optional<PropertyListDictionary> root = parsePropertyList(bytes);
    const PropertyListValue* profile = root ? find(*root, "Default") : nullptr;
    if (profile == nullptr || profile->asDictionary() == nullptr)
        return 0;
    const PropertyListValue* language = find(*profile->asDictionary(), "Language");
    const int64_t index = language != nullptr ? language->asInteger().value_or(0) : 0;
    return index == static_cast<int32_t>(index) ? static_cast<int32_t>(index) : 0;
}

int32_t languageOfBundle(const std::string& bundlePath) {
    constexpr uint64_t mostBytes = 64 * 1024;
    const auto bytes = readFile(bundlePath + "/Versions/A/cvscan.plist", mostBytes);
    return bytes ? languageOfPropertyList(*bytes) : 0;
}

} // namespace paperline::sources

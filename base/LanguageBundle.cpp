#include "base/LanguageBundle.h"

#include "base/StringsFile.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace paperline {
namespace {

// Many times the size of the largest strings file.
constexpr uint64_t maximumStringsFileBytes = 4 * 1024 * 1024;

} // namespace

LanguageBundle::LanguageBundle(std::string folder, std::map<std::string, std::string> texts)
    : folder_(std::move(folder)), texts_(std::move(texts)) {}

std::shared_ptr<const LanguageBundle> LanguageBundle::load(const std::string& folder) {
    if (!folderExists(folder))
        return nullptr;
    std::map<std::string, std::string> texts;
    if (const std::optional<std::vector<uint8_t>> bytes =
            readFile(folder + "/Localizable.strings", maximumStringsFileBytes))
        texts = parseStringsFile(*bytes).texts;
    return std::make_shared<const LanguageBundle>(folder, std::move(texts));
}

std::string LanguageBundle::localizedString(const std::string& key) const {
    const auto found = texts_.find(key);
    return found == texts_.end() ? key : found->second;
}

std::string localizedString(const std::shared_ptr<const LanguageBundle>& bundle,
                            const std::string& key) {
    return bundle ? bundle->localizedString(key) : key;
}

} // namespace paperline

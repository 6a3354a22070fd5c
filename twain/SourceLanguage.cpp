// Gives the data source's own dialogs the language of the application.
#include "controller/AppDelegate.h"

#include "base/CvOutputLog.h"
#include "platform/plist/PropertyList.h"

#include <algorithm>
#include <limits>

namespace paperline {
namespace {

constexpr int32_t modeRead = 1;

int32_t clampedInt(int64_t number) {
    return static_cast<int32_t>(std::clamp<int64_t>(
        number, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

const PropertyListDictionary* defaultProfile(const PropertyListDictionary& root) {
    const PropertyListValue* value = find(root, "Default");
    return value != nullptr ? value->asDictionary() : nullptr;
}

// Sets the language in "Default"; everything else stays. A failure is only traced.
void writeLanguage(const std::string& path, PropertyListDictionary root, int32_t language) {
    PropertyListDictionary profile;
    if (const PropertyListDictionary* old = defaultProfile(root))
        profile = *old;
    profile["Language"] = PropertyListValue(int64_t{language});
    root["Default"] = PropertyListValue(std::move(profile));
    if (!writePropertyListAtomically(path, root))
        traceLine("DS language not written");
}

} // namespace

void AppDelegate::ReadWriteDSLanguageSetting(int32_t mode, bool orgLanaguage) {
    TraceScope trace("ReadWriteDSLanguageSetting");
    const auto index = static_cast<size_t>(std::max(currentDSIndex, 0));
    if (!hasSourceBundle || index >= dsDatas.size())
        return;
    const std::string path = dsDatas[index].dsPath + "/Versions/A/cvscan.plist";
    traceText("DS Path", path);
    const bool mayWrite = !launchOptions_.commandLine;

    const PropertyListFile file = readPropertyList(path);
    if (file.status == PropertyListStatus::missing) {
        if (mayWrite)
            writeLanguage(path, {}, profileLanguage);
        if (orgLanaguage)
            dsOldLanguage = 0;
        return;
    }
    const PropertyListDictionary* profile = defaultProfile(file.root);
    if (profile == nullptr)
        return;
    if (mode != modeRead) {
        if (mayWrite)
            writeLanguage(path, file.root, orgLanaguage ? dsOldLanguage : profileLanguage);
        return;
    }
    const PropertyListValue* value = find(*profile, "Language");
    const std::optional<int64_t> number = value != nullptr ? value->asInteger() : std::nullopt;
    if (!number)
        return;
    const int32_t language = clampedInt(*number);
    traceValue("DS Language set", language);
    if (orgLanaguage) {
        dsOldLanguage = language;
        traceValue("orgLanaguage", dsOldLanguage);
        return;
    }
    currentLanguage = language;
    setProfileLanguage(language);
    traceValue("profileLanguage", profileLanguage);
}

} // namespace paperline

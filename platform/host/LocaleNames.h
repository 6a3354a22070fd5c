// What the locale environment says of the user's languages.
#pragma once

#include <string>
#include <vector>

namespace paperline {

// LANGUAGE, LC_ALL, LC_MESSAGES, LANG; empty where unset.
struct LocaleEnvironment {
    std::string language, lcAll, lcMessages, lang;
};
// Written as "de-DE", "zh-Hant-TW", "zh-Hans-CN", "no" for nb and nn; the first is preferred.
std::vector<std::string> preferredLanguagesOf(const LocaleEnvironment& environment);
std::string localeIdentifierOf(const LocaleEnvironment& environment);

} // namespace paperline

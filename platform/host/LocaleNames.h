// The user's languages from the locale environment.
#pragma once

#include <string>
#include <vector>

namespace paperline {

// Values of LANGUAGE, LC_ALL, LC_MESSAGES and LANG; empty where unset.
struct LocaleEnvironment {
    std::string language, lcAll, lcMessages, lang;
};
// "de-DE", "zh-Hant-TW", "no" (for nb and nn, too), the preferred one first. Never empty.
std::vector<std::string> preferredLanguagesOf(const LocaleEnvironment& environment);
// "de_DE"; "en_US" for C and POSIX.
std::string localeIdentifierOf(const LocaleEnvironment& environment);

} // namespace paperline

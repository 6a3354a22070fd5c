// What the controller asks of the machine it runs on. Slices ask here and hand the answers to
// leaves as arguments; tests replace single members.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

struct SystemVersion {
    int majorNumber = 0;
    int minorNumber = 0;
    int bugFix = 0;
};

struct Host {
    std::function<double()> secondsSinceEpoch;     // wall clock, fractions included
    std::function<std::string()> loginName;        // never empty
    std::function<std::string()> homeFolder;       // absolute, without a trailing slash
    std::function<std::string()> localeIdentifier; // "de_DE"; "en_US" for C and POSIX
    std::function<std::vector<std::string>()>
        preferredLanguages;                       // first is preferred: "zh-Hant-TW"
    std::function<SystemVersion()> systemVersion; // from os-release
    std::function<std::optional<uint64_t>()> availableMemoryBytes; // none: cannot be read
    std::function<std::optional<int64_t>(const std::string& path)>
        freeSpaceBytes; // of the path's file system
};

// The process-wide host; starts with the real machine.
Host& host();

// A new host that asks the real machine; tests restore with it.
Host realHost();

// The parts of the real host that are pure, for tests: os-release text to version, and the locale
// environment (LANGUAGE, LC_ALL, LC_MESSAGES, LANG in that order; empty when unset) to the
// preferred language list, written as "de-DE", "zh-Hant-TW", "zh-Hans-CN", "no" for nb and nn.
SystemVersion parseSystemVersion(const std::string& osReleaseText);
struct LocaleEnvironment {
    std::string language, lcAll, lcMessages, lang;
};
std::vector<std::string> preferredLanguagesOf(const LocaleEnvironment& environment);
std::string localeIdentifierOf(const LocaleEnvironment& environment);

} // namespace paperline

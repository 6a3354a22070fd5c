// The command line of "paperline".
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

// Exit codes.
inline constexpr int exitSaved = 0;
inline constexpr int exitNotAllSaved = 1;
inline constexpr int exitUsage = 2;
inline constexpr int exitNoSuchSource = 3;
inline constexpr int exitSourceNotOpened = 4;
inline constexpr int exitSourceHung = 5;

// Hung source timeout: a source that is silent for longer has hung. --timeout sets another.
inline constexpr int hungSourceTimeoutSeconds = 300;

struct ScanRequest {
    std::string source;                // product name; empty: the one used last, else the first
    std::optional<int32_t> fileFormat; // file-format code; none: the stored one
    std::optional<std::string> folder; // none: the stored one
    std::optional<std::string> name;   // file-name template
    std::vector<std::string> options;  // "NAME=VALUE", for this scan only
    bool json = false;
    int timeoutSeconds = hungSourceTimeoutSeconds;
};

enum class Command { window, scan, listSources, listOptions, help, version, usageError };

struct CommandLine {
    Command command = Command::window;
    ScanRequest scan;
    std::string optionsOf; // listOptions: the source
    std::string error;     // usageError: what is wrong
};

// `arguments` without the program's name.
CommandLine parseCommandLine(std::span<const std::string> arguments);

extern const char* const usageText;

} // namespace paperline

// What the user typed after "paperline".
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

// Exit codes of the commands.
inline constexpr int exitSaved = 0;
inline constexpr int exitNotAllSaved = 1;
inline constexpr int exitUsage = 2;
inline constexpr int exitNoSuchSource = 3;
inline constexpr int exitSourceNotOpened = 4;
inline constexpr int exitSourceHung = 5;

struct ScanRequest {
    std::string source;                // product name; empty: the remembered or first one
    std::optional<int32_t> fileFormat; // file-format code; none: the stored one
    std::optional<std::string> folder; // absolute or relative; none: the stored one
    std::optional<std::string> name;   // file-name template
    std::vector<std::string> options;  // "NAME=VALUE", for this scan only
    bool json = false;
    int timeoutSeconds = 300; // a source that is silent for longer counts as hung
};

enum class Command { window, scan, listSources, listOptions, help, version, usageError };

struct CommandLine {
    Command command = Command::window;
    ScanRequest scan;
    std::string optionsOf; // listOptions: the source
    std::string error;     // usageError: what is wrong, in English
};

// `arguments` are those behind the program's name.
CommandLine parseCommandLine(std::span<const std::string> arguments);

extern const char* const usageText;

} // namespace paperline

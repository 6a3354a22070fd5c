// Runs tools that are not ours on the files that tests write.
#pragma once

#include <array>
#include <cstdio>
#include <string>

namespace paperline {

// What a shell command prints; "failed: " stands before it when the command fails.
inline std::string outputOf(const std::string& command) {
    std::string text;
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return "no shell";
    std::array<char, 4096> buffer{};
    while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
        text.append(buffer.data(), count);
    return pclose(pipe) == 0 ? text : "failed: " + text;
}

} // namespace paperline

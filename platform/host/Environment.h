// Environment variables.
#pragma once

#include <cstdlib>
#include <string>

namespace paperline {

// Empty when it is not set.
inline std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : std::string();
}

} // namespace paperline

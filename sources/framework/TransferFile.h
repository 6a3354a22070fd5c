// The file of a file transfer.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace paperline::sources {

// Creates or replaces the file (never through a link) with the two byte runs. False on any error.
[[nodiscard]] bool writePageFile(const std::string& path,
                                 std::span<const uint8_t> header,
                                 std::span<const uint8_t> pixels);

} // namespace paperline::sources

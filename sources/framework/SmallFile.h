// Configuration files of data sources: regular files of at most 1 MiB.
#pragma once

#include <optional>
#include <string>

namespace paperline::sources {

[[nodiscard]] std::optional<std::string> readSmallFile(const std::string& path);

} // namespace paperline::sources

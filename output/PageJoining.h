// Adds the pages of a folder to a joiner, with the trace lines of the joining operation.
#pragma once

#include "codecs/pixels/PageJoiner.h"

#include <optional>
#include <string>
#include <vector>

namespace paperline {

// In the order of the characters' codes: "Image_10" precedes "Image_2".
std::vector<std::string> sortedNames(std::vector<std::string> names);

// Trace lines for each page; none without an operation.
struct JoinTrace {
    const char* operation = nullptr;
    const char* loading = "";
    const char* unreadable = "";
    std::vector<const char*> added;
};

enum class UnreadablePages {
    retried, // without end: the staging folder holds only pages, so the cause must be a passing one
    leftOut,
};

// Adds the pages in the given order. The names left out; nothing when the output failed.
[[nodiscard]] std::optional<std::vector<std::string>>
joinPages(PageJoiner& joiner,
          const std::string& folder,
          const std::vector<std::string>& names,
          UnreadablePages unreadable,
          const JoinTrace& trace = {});

} // namespace paperline

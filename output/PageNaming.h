// Names of page files: prefix, "_", a counter of at least five digits, extension.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace paperline {

struct NameSearch {
    // Taken numbers are skipped, per extension; without it (later pages of a multi-page file) the
    // counter is used as it is.
    bool testCollisions = true;
    std::function<bool(const std::string& path)> fileExists;
    std::function<void(const std::string& base)> announce; // told every candidate; may be empty
};

struct PageNamePattern {
    std::string folder;
    std::string prefix;
    std::string extension; // with its dot; empty for a code outside the format table
    bool isMultiPage = false;
};

struct PageName {
    std::string base; // without extension
    std::string path; // with it
    uint32_t counter = 0;
};

// folder + "/" + prefix + "_00001"
std::string pageBasePath(const PageNamePattern& pattern, uint32_t counter);

// "/Image_00001" and the extension, for staged pages
std::string stagedPageName(uint32_t page, const std::string& extension);

// The name for the next page from `counter` upward; a gap below it is never filled.
PageName findPageName(const PageNamePattern& pattern, uint32_t counter, const NameSearch& search);

} // namespace paperline

// Writes the file of a page.
#pragma once

#include "platform/files/FileContent.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace paperline {

enum class PageWriteResult {
    complete,   // every byte is in the file
    notOpened,  // no file could be created under that name
    incomplete, // the disk is full or fails; only a scratch file may remain, cut off
};

struct PageWrite {
    PageWriteResult result = PageWriteResult::notOpened;
    std::string path;   // of the file written; after a collision not the path asked for
    std::string reason; // why the file is not complete; empty when it is
};

// The next free name, after another program took the last one; empty when there is none.
using NextPagePath = std::function<std::string()>;

struct PageWriteTarget {
    std::string path;
    bool isScratch = false; // overwritten; other files are created with all their content
    NextPagePath nextPath;  // without it a taken name counts as not opened
};

// `awaitBytes` as for createFileWhole; not called for scratch files.
[[nodiscard]] PageWrite writePageFile(const PageWriteTarget& target,
                                      std::span<const uint8_t> bytes,
                                      const AwaitBytes& awaitBytes = {});

} // namespace paperline

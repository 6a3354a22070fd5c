// Puts finished bytes under a page's name. Files of the user's are created whole and never over
// another one; scratch files are simply written.
#pragma once

#include "platform/files/FileContent.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace paperline {

enum class PageWriteResult {
    complete,   // every byte is in the file
    notOpened,  // no file could be made under that name
    incomplete, // the content did not fit; a user's file leaves nothing behind
};

struct PageWrite {
    PageWriteResult result = PageWriteResult::notOpened;
    std::string path; // where the bytes went: another name than asked for after a collision
};

// Called when the name was taken between search and write; gives the next free one, or nothing
// when there is none.
using NextPagePath = std::function<std::string()>;

struct PageWriteTarget {
    std::string path;
    bool isScratch = false;
    NextPagePath nextPath; // without it a taken name counts as not opened
};

// Creates a file whole; the default asks platform/Files. Tests hand in another.
using WholeFileCreator =
    std::function<CreateResult(const std::string& path, std::span<const uint8_t> bytes)>;

[[nodiscard]] PageWrite writePageFile(const PageWriteTarget& target,
                                      std::span<const uint8_t> bytes,
                                      const WholeFileCreator& createWhole = createFileWhole);

} // namespace paperline

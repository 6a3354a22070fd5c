// Reads and replaces parts of a file without loading it.
#pragma once

#include "platform/files/Descriptor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace paperline {

class FilePieces {
public:
    // Only regular files are opened.
    explicit FilePieces(const std::string& path);
    bool isOpen() const { return file_.isOpen(); }

    // The number of bytes read: fewer than asked for at the end of the file or on an error.
    size_t read(uint64_t position, std::span<uint8_t> bytes) const;
    // The position of the first occurrence of a text that is not empty.
    std::optional<uint64_t> find(std::string_view text) const;

private:
    Descriptor file_;
};

// Replaces the file by a copy that `change` has edited. Atomic: on failure, also of the change, the
// file keeps its content.
[[nodiscard]] bool replaceByChangedCopy(const std::string& path,
                                        const std::function<bool(int descriptor)>& change);

// Overwrites bytes in such a copy. The length stays: bytes beyond the end are dropped.
[[nodiscard]] bool
replaceBytes(const std::string& path, uint64_t position, std::span<const uint8_t> bytes);

} // namespace paperline

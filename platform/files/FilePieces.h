// A few bytes of a file of any size, without holding the file.
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

// A regular file to be read by position.
class FilePieces {
public:
    explicit FilePieces(const std::string& path);
    bool isOpen() const { return file_.isOpen(); }

    // As much of `bytes` as the file holds from that position on; the count. An error counts as the
    // file's end.
    size_t read(uint64_t position, std::span<uint8_t> bytes) const;
    // The first place of the text, which is not empty.
    std::optional<uint64_t> find(std::string_view text) const;

private:
    Descriptor file_;
};

// Replaces the file by a copy on whose descriptor `change` has worked. Atomic: on failure (false),
// also that of the change, the file is as it was.
[[nodiscard]] bool replaceByChangedCopy(const std::string& path,
                                        const std::function<bool(int descriptor)>& change);

// Replaces the file by a copy that holds `bytes` from that position on. Its length stays: the bytes
// end with the file. Atomic like the above.
[[nodiscard]] bool
replaceBytes(const std::string& path, uint64_t position, std::span<const uint8_t> bytes);

} // namespace paperline

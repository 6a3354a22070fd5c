#include "platform/files/FilePieces.h"

#include "platform/files/NewFile.h"

#include <algorithm>
#include <unistd.h>
#include <vector>

namespace paperline {
namespace {

constexpr size_t windowBytes = 256 * size_t{1024};

} // namespace

FilePieces::FilePieces(const std::string& path) {
    if (std::optional<RegularFile> file = openRegularFile(path))
        file_ = std::move(file->descriptor);
}

size_t FilePieces::read(uint64_t position, std::span<uint8_t> bytes) const {
    return readAt(file_.number(), position, bytes);
}

std::optional<uint64_t> FilePieces::find(std::string_view text) const {
    // Windows overlap, so that a text across their border is found.
    const size_t overlap = text.size() - 1;
    std::vector<uint8_t> window(windowBytes + overlap);
    for (uint64_t position = 0;; position += windowBytes) {
        const size_t count = read(position, window);
        const std::string_view seen(reinterpret_cast<const char*>(window.data()), count);
        const size_t found = seen.find(text);
        if (found != std::string_view::npos)
            return position + found;
        if (count < window.size())
            return std::nullopt;
    }
}

bool replaceByChangedCopy(const std::string& path, const std::function<bool(int)>& change) {
    const std::optional<RegularFile> old = openRegularFile(path);
    if (!old)
        return false;
    NewFile changed(path, NewFile::Named{});
    if (!changed.isOpen() || !copyAll(old->descriptor.number(), changed.descriptor()) ||
        !change(changed.descriptor()))
        return false;
    (void)::fchmod(changed.descriptor(), old->status.st_mode & 0777);
    if (!syncFile(changed.descriptor()) || !changed.replaceTarget())
        return false;
    syncFolderOf(path);
    return true;
}

bool replaceBytes(const std::string& path, uint64_t position, std::span<const uint8_t> bytes) {
    return replaceByChangedCopy(path, [position, bytes](int descriptor) {
        const off_t end = ::lseek(descriptor, 0, SEEK_END);
        if (end < 0)
            return false;
        const auto size = static_cast<uint64_t>(end);
        const uint64_t start = std::min(position, size);
        const auto fitting = static_cast<size_t>(std::min<uint64_t>(bytes.size(), size - start));
        return writeAllAt(descriptor, start, bytes.first(fitting));
    });
}

} // namespace paperline

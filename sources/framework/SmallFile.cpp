#include "sources/framework/SmallFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace paperline::sources {

namespace {

constexpr off_t maximumBytes = 1 << 20;

std::optional<std::string> readDescriptor(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > maximumBytes)
        return std::nullopt;
    std::string text(static_cast<size_t>(status.st_size), '\0');
    size_t filled = 0;
    while (filled < text.size()) {
        const ssize_t count = read(descriptor, text.data() + filled, text.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        filled += static_cast<size_t>(count);
    }
    text.resize(filled);
    return text;
}

} // namespace

std::optional<std::string> readSmallFile(const std::string& path) {
    // A pipe under this name must not hold up the application.
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return std::nullopt;
    auto text = readDescriptor(descriptor);
    close(descriptor);
    return text;
}

} // namespace paperline::sources

#include "dsm/DefaultSource.h"

#include "platform/places/DataSourceFolders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace paperline::dsm {
namespace {

std::string fileName() {
    const std::string folder = twain::abi::userDataFolder();
    return folder.empty() ? std::string() : folder + "/default-source";
}

std::string line(const twain::abi::Str32& text) {
    std::string result(text, ::strnlen(text, sizeof(text)));
    for (char& character : result)
        if (character == '\n')
            character = ' ';
    return result + "\n";
}

void createFolders(const std::string& path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        static_cast<void>(::mkdir(path.substr(0, slash).c_str(), 0700));
}

bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(file, text.data(), text.size());
        if (count <= 0)
            return false;
        text.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

} // namespace

std::string nameLines(const twain::abi::Identity& identity) {
    return line(identity.Manufacturer) + line(identity.ProductFamily) + line(identity.ProductName);
}

std::string readDefaultSource() {
    const int file = ::open(fileName().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return {};
    std::array<char, 3 * sizeof(twain::abi::Str32)> bytes{}; // no valid file is longer
    const ssize_t count = ::read(file, bytes.data(), bytes.size());
    ::close(file);
    return count > 0 ? std::string(bytes.data(), static_cast<size_t>(count)) : std::string();
}

bool writeDefaultSource(const std::string& lines) {
    const std::string name = fileName();
    if (name.empty())
        return false;
    createFolders(name);
    std::string temporary = name + ".XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0)
        return false;
    const bool written = writeAll(file, lines);
    const bool closed = ::close(file) == 0;
    if (written && closed && std::rename(temporary.c_str(), name.c_str()) == 0)
        return true;
    ::unlink(temporary.c_str());
    return false;
}

} // namespace paperline::dsm

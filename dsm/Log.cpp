#include "dsm/Log.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace paperline::dsm {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};

} // namespace

void logLine(const std::string& text) {
    std::string line = "data source manager: " + text;
    for (char& character : line)
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7f)
            character = '?';
    line += '\n';
    const char* name = std::getenv("PAPERLINE_DSM_LOG");
    std::unique_ptr<std::FILE, FileCloser> file;
    if (name != nullptr && name[0] != '\0')
        file.reset(std::fopen(name, "ae"));
    static_cast<void>(std::fputs(line.c_str(), file ? file.get() : stderr));
}

} // namespace paperline::dsm

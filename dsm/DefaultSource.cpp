#include "dsm/DefaultSource.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/NewFile.h"
#include "platform/files/PathText.h"
#include "platform/places/StandardFolders.h"

#include <cstring>

namespace paperline::dsm {
namespace {

std::string fileName() {
    const std::string folder = userDataFolder();
    return folder.empty() ? std::string() : folder + "/default-source";
}

std::string line(const twain::abi::Str32& text) {
    std::string result(text, ::strnlen(text, sizeof(text)));
    for (char& character : result)
        if (character == '\n')
            character = ' ';
    return result + "\n";
}

} // namespace

std::string nameLines(const twain::abi::Identity& identity) {
    return line(identity.Manufacturer) + line(identity.ProductFamily) + line(identity.ProductName);
}

std::string readDefaultSource() {
    constexpr size_t maximumBytes = 3 * sizeof(twain::abi::Str32);
    return readTextFile(fileName(), maximumBytes).value_or("");
}

bool writeDefaultSource(const std::string& lines) {
    const std::string name = fileName();
    if (name.empty() || !createFolderWithParents(folderOfPath(name), 0700))
        return false;
    NewFile file(name, NewFile::Named{}, 0600);
    return file.isOpen() && writeAll(file.descriptor(), lines) && file.replaceTarget();
}

} // namespace paperline::dsm

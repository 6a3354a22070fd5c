// A file that gets its name only when it is whole.
#pragma once

#include "platform/files/Descriptor.h"

#include <string>

namespace paperline {

// Opened in the target's folder, without a name where the file system allows it and under a hidden
// one elsewhere; what is not published disappears with the object.
class NewFile {
public:
    // isOpen() tells whether it worked. `mode` is reduced by the umask.
    explicit NewFile(const std::string& targetPath, unsigned mode = 0666);
    // As above, always under a hidden name: needed for replacing.
    struct Named {};
    NewFile(const std::string& targetPath, Named, unsigned mode = 0666);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool isOpen() const { return file_.isOpen(); }
    int descriptor() const { return file_.number(); } // open for reading and writing

    // Puts the file under the target's name unless that is taken. 0, or the errno.
    [[nodiscard]] int publish();
    // Renames over whatever has the target's name (named files only).
    [[nodiscard]] bool replaceTarget();

private:
    void openNamed(unsigned mode);

    std::string target_;
    std::string hiddenPath_; // empty while the file has no name of its own
    Descriptor file_;
};

// Renames without ever replacing. 0, or the errno (EEXIST: the new name is taken).
[[nodiscard]] int renameWithoutReplacing(const std::string& from, const std::string& to);

// Makes the names in the folder of this path durable. File systems that cannot are passed over.
void syncFolderOf(const std::string& path);

} // namespace paperline

// A file that gets its name only when it is complete.
#pragma once

#include "platform/files/Descriptor.h"

#include <string>

namespace paperline {

// Created in the target's folder without a name, or under a hidden one where the file system needs
// one. Removed with the object unless published.
class NewFile {
public:
    // isOpen() tells whether it was created, errno why not. `mode` is reduced by the umask.
    explicit NewFile(const std::string& targetPath, unsigned mode = 0666);
    // Always under a hidden name, which replaceTarget() needs.
    struct Named {};
    NewFile(const std::string& targetPath, Named, unsigned mode = 0666);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool isOpen() const { return file_.isOpen(); }
    int descriptor() const { return file_.number(); } // for reading and writing

    // Gives the file the target's name unless that is taken. 0, or the errno.
    [[nodiscard]] int publish();
    // Replaces whatever has the target's name. Sets errno on failure.
    [[nodiscard]] bool replaceTarget();

private:
    void openNamed(unsigned mode);

    std::string target_;
    std::string hiddenPath_; // empty while the file has no name
    Descriptor file_;
};

// Never replaces a file. 0, or the errno (EEXIST: the new name is taken).
[[nodiscard]] int renameWithoutReplacing(const std::string& from, const std::string& to);

// Syncs the names in the folder that holds the path, where the file system can.
void syncFolderOf(const std::string& path);

} // namespace paperline

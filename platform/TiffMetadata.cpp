#include "platform/TiffMetadata.h"

#include "platform/NewFile.h"
#include "platform/TiffHandle.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace paperline {
namespace {

// The changed directory is appended; the strips stay where they are.
bool rewriteFirstPage(int descriptor, const std::string& make, const std::string& model) {
    TiffErrors errors;
    TiffDescriptor access{.number = descriptor};
    TiffHandle tiff = openTiffDescriptor(access, "r+", errors);
    if (!tiff || TIFFSetField(tiff.get(), TIFFTAG_MAKE, make.c_str()) == 0 ||
        TIFFSetField(tiff.get(), TIFFTAG_MODEL, model.c_str()) == 0 ||
        TIFFRewriteDirectory(tiff.get()) == 0)
        return false;
    tiff.reset();
    return errors.count == 0 && !access.writeFailed;
}

} // namespace

bool setTiffMakeAndModel(const std::string& path,
                         const std::string& make,
                         const std::string& model) {
    const Descriptor old = openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status = {};
    if (!old.isOpen() || ::fstat(old.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    NewFile changed(path, NewFile::Named{});
    if (!changed.isOpen() || !copyAll(old.number(), changed.descriptor()) ||
        !rewriteFirstPage(changed.descriptor(), make, model))
        return false;
    (void)::fchmod(changed.descriptor(), status.st_mode & 0777);
    if (!syncFile(changed.descriptor()) || !changed.replaceTarget())
        return false;
    syncFolderOf(path);
    return true;
}

} // namespace paperline

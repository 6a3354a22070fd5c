#include "codecs/tiff/TiffMetadata.h"

#include "codecs/tiff/TiffHandle.h"
#include "platform/files/FilePieces.h"

namespace paperline {
namespace {

// Appends the changed directory; the strips stay where they are.
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
    return replaceByChangedCopy(path, [&make, &model](int descriptor) {
        return rewriteFirstPage(descriptor, make, model);
    });
}

} // namespace paperline

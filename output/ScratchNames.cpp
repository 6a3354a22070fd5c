#include "output/ScratchNames.h"

namespace paperline {

bool isScratchFile(const std::string& path, const ScratchPlaces& scratchPlace) {
    return path == scratchPlace(previewName) || path == scratchPlace(thumbnailName) ||
           path.starts_with(scratchPlace(scratchRootName) + "/");
}

} // namespace paperline

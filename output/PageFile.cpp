#include "output/PageFile.h"

#include "output/PageNaming.h"

namespace paperline {

namespace {

PageWrite writeScratchFile(const std::string& path, std::span<const uint8_t> bytes) {
    if (writeFile(path, bytes))
        return {PageWriteResult::complete, path};
    return {fileExists(path) ? PageWriteResult::incomplete : PageWriteResult::notOpened, path};
}

} // namespace

PageWrite writePageFile(const PageWriteTarget& target,
                        std::span<const uint8_t> bytes,
                        const WholeFileCreator& createWhole) {
    if (target.isScratch)
        return writeScratchFile(target.path, bytes);
    std::string path = target.path;
    while (true) {
        switch (createWhole(path, bytes)) {
        case CreateResult::created:
            return {PageWriteResult::complete, path};
        case CreateResult::notOpened:
            return {PageWriteResult::notOpened, path};
        case CreateResult::failed:
            return {PageWriteResult::incomplete, path};
        case CreateResult::alreadyThere:
            break;
        }
        const std::string next = target.nextPath ? target.nextPath() : std::string();
        if (next.empty() || next == path)
            return {PageWriteResult::notOpened, path};
        path = next;
    }
}

bool isScratchFile(const std::string& path, const ScratchPlaces& scratchPlace) {
    return path == scratchPlace(previewName) || path == scratchPlace(thumbnailName) ||
           path.starts_with(scratchPlace(scratchRootName) + "/");
}

} // namespace paperline

#include "platform/files/PageFile.h"

#include "platform/files/Files.h"
#include "platform/files/WriteFailure.h"

#include <cerrno>

namespace paperline {

namespace {

PageWrite writeScratchFile(const std::string& path, std::span<const uint8_t> bytes) {
    if (writeFile(path, bytes))
        return {PageWriteResult::complete, path, {}};
    const std::string reason = writeFailureText(errno);
    return {
        fileExists(path) ? PageWriteResult::incomplete : PageWriteResult::notOpened, path, reason};
}

} // namespace

PageWrite writePageFile(const PageWriteTarget& target,
                        std::span<const uint8_t> bytes,
                        const AwaitBytes& awaitBytes) {
    if (target.isScratch)
        return writeScratchFile(target.path, bytes);
    std::string path = target.path;
    while (true) {
        switch (createFileWhole(path, bytes, awaitBytes)) {
        case CreateResult::created:
            return {PageWriteResult::complete, path, {}};
        case CreateResult::notOpened:
            return {PageWriteResult::notOpened, path, writeFailureText(errno)};
        case CreateResult::failed:
            return {PageWriteResult::incomplete, path, writeFailureText(errno)};
        case CreateResult::alreadyThere:
            break;
        }
        const std::string next = target.nextPath ? target.nextPath() : std::string();
        if (next.empty() || next == path)
            return {PageWriteResult::notOpened, path, writeFailureText(EEXIST)};
        path = next;
    }
}

} // namespace paperline

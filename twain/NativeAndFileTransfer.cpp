// Test paths: native and file transfers, which decode the pages and drop them, and the speed test.
#include "controller/AppDelegate.h"

#include "base/CvOutputLog.h"
#include "codecs/pictures/PictureReader.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/places/Places.h"
#include "twain/PageTransfer.h"
#include "twain/TWAINHandler.h"
#include "twain/manager/DataSourceManagerMemory.h"

#include <algorithm>
#include <limits>

namespace paperline {
namespace {

constexpr uint64_t largestPicturePixels = uint64_t{1} << 30U;
constexpr const char* nativePictureName = "/tmp/CorvaneTempImage/NativeImage";
constexpr int32_t scanSetupAfterNative = 1; // on purpose; 0 after other transfers

void decodePicture(const std::string& path) {
    const bool isPicture = readPicture(path, 0, largestPicturePixels).has_value();
    traceValue("picture decoded", isPicture ? 1 : 0);
}

// Decodes the picture by way of a file, frees the handle, and returns the picture's size in bytes.
size_t takeNativePicture(TW_HANDLE handle) {
    const size_t byteCount = dsmMemorySize(handle);
    if (const auto* bytes = static_cast<const uint8_t*>(lockDsmMemory(handle))) {
        const std::string path = scratchPath(nativePictureName);
        if (byteCount > 0 && writeFile(path, {bytes, byteCount}))
            decodePicture(path);
        removePath(path);
        unlockDsmMemory(handle);
    }
    freeDsmMemory(handle);
    return byteCount;
}

std::string setupFileName(const TW_SETUPFILEXFER& setup) {
    const size_t length = std::min<size_t>(setup.FileName[0], setup.FileName.size() - 1);
    const std::string text(setup.FileName.begin() + 1,
                           setup.FileName.begin() + 1 + static_cast<std::ptrdiff_t>(length));
    return text.substr(0, text.find('\0'));
}

// False: the page cannot be fetched, or the source delivers without end.
bool measurePage(PageBuffers& buffers, PageGuard& guard) {
    TW_IMAGEINFO info{};
    if (readImageInfo(*gTWAINHandler, info) != twain::TWRC_SUCCESS)
        return false;
    const std::optional<PageLayout> layout = pageLayout(info);
    if (!layout)
        return false;
    askBufferSizes(*gTWAINHandler);
    if (!buffers.preparePage(*layout))
        return false;
    const ReceivedStrips strips = receiveStrips(*gTWAINHandler, buffers);
    traceValue("speedTest",
               static_cast<int32_t>(
                   std::min<uint64_t>(strips.bytes, std::numeric_limits<int32_t>::max())));
    return !strips.isEndless && guard.admits(strips.rows > 0, strips.code == twain::TWRC_CANCEL);
}

} // namespace

void AppDelegate::completeNativeXfer() {
    TraceScope trace("completeNativeXfer");
    const DelayedMessagesHold hold;
    PageGuard guard;
    bool goesOn = true;
    while (goesOn) {
        TW_IMAGEINFO info{};
        readImageInfo(*gTWAINHandler, info);
        TW_HANDLE handle = nullptr;
        const int32_t code = gTWAINHandler->DSCall(
            twain::DG_IMAGE, twain::DAT_IMAGENATIVEXFER, twain::MSG_GET, &handle);
        const EndedTransfer ended = endTransfer(*gTWAINHandler);
        traceValue("pendingXfers.count", ended.pendingPages);
        const bool delivered = code == twain::TWRC_XFERDONE && handle != nullptr;
        const size_t byteCount = delivered ? takeNativePicture(handle) : 0;
        const bool admitted = guard.admits(byteCount > 0, code == twain::TWRC_CANCEL);
        if (!admitted || ended.code != twain::TWRC_SUCCESS)
            discardPendingPages(*gTWAINHandler);
        goesOn = admitted && ended.pendingPages != 0;
    }
    closeSource(*gTWAINHandler);
    endScan(scanSetupAfterNative);
}

void AppDelegate::completeFileXfer() {
    TraceScope trace("completeFileXfer");
    const DelayedMessagesHold hold;
    TW_SETUPFILEXFER setup{};
    gTWAINHandler->DSCall(
        twain::DG_CONTROL, twain::DAT_SETUPFILEXFER, twain::MSG_GETDEFAULT, &setup);
    gTWAINHandler->DSCall(twain::DG_IMAGE, twain::DAT_IMAGEFILEXFER, twain::MSG_GET, nullptr);
    endTransfer(*gTWAINHandler);
    discardPendingPages(*gTWAINHandler);
    closeSource(*gTWAINHandler);
    endScan();
    if (const std::string path = setupFileName(setup); !path.empty())
        decodePicture(path);
}

void AppDelegate::speedTest() {
    TraceScope trace("speedTest");
    const DelayedMessagesHold hold;
    PageBuffers buffers;
    PageGuard guard;
    bool goesOn = true;
    while (goesOn) {
        const bool measured = measurePage(buffers, guard);
        const EndedTransfer ended = endTransfer(*gTWAINHandler);
        if (!measured || ended.code != twain::TWRC_SUCCESS)
            discardPendingPages(*gTWAINHandler);
        goesOn = measured && ended.pendingPages != 0;
    }
    closeSource(*gTWAINHandler);
    endScan();
}

} // namespace paperline

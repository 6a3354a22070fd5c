#include "twain/PageTransfer.h"

#include "twain/records/TwainConstants.h"

namespace paperline {

int32_t readImageInfo(TWAINHandler& handler, TW_IMAGEINFO& info) {
    return handler.DSCall(twain::DG_IMAGE, twain::DAT_IMAGEINFO, twain::MSG_GET, &info);
}

void askBufferSizes(TWAINHandler& handler) {
    TW_SETUPMEMXFER sizes{};
    handler.DSCall(twain::DG_CONTROL, twain::DAT_SETUPMEMXFER, twain::MSG_GET, &sizes);
}

ReceivedStrips receiveStrips(TWAINHandler& handler, PageBuffers& buffers) {
    ReceivedStrips received;
    StripGuard guard(buffers.bitmap()->pixelsHigh());
    do {
        TW_IMAGEMEMXFER strip = buffers.stripRecord();
        received.code =
            handler.DSCall(twain::DG_IMAGE, twain::DAT_IMAGEMEMXFER, twain::MSG_GET, &strip);
        buffers.markStrip();
        // The strip that ends the page has rows, too.
        PageBuffers::CopiedRows copied;
        if (received.code == twain::TWRC_SUCCESS || received.code == twain::TWRC_XFERDONE)
            copied = buffers.copyStrip(strip);
        received.rows += copied.rows;
        received.bytes += copied.bytes;
        received.isEndless = received.code == twain::TWRC_SUCCESS && !guard.admits(copied.rows);
    } while (received.code == twain::TWRC_SUCCESS && !received.isEndless);
    buffers.finishPage();
    return received;
}

EndedTransfer endTransfer(TWAINHandler& handler) {
    TW_PENDINGXFERS pending{};
    const int32_t code =
        handler.DSCall(twain::DG_CONTROL, twain::DAT_PENDINGXFERS, twain::MSG_ENDXFER, &pending);
    return {.code = code,
            .pendingPages = code == twain::TWRC_SUCCESS ? pending.Count : uint16_t{0}};
}

int32_t discardPendingPages(TWAINHandler& handler) {
    TW_PENDINGXFERS pending{};
    return handler.DSCall(twain::DG_CONTROL, twain::DAT_PENDINGXFERS, twain::MSG_RESET, &pending);
}

void closeSource(TWAINHandler& handler) {
    TW_USERINTERFACE none{};
    handler.DisableDS(&none);
    handler.CloseDS();
}

} // namespace paperline

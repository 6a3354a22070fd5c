// Enabling the source, its pages one after the other, and the end of a batch.
#include "sources/framework/DataSource.h"
#include "sources/framework/StatusCodes.h"

namespace paperline::sources {

using namespace twain;

namespace {

constexpr uint16_t unknownCount = 65535; // at least one more

} // namespace

uint16_t DataSource::userInterfaceTriplet(uint16_t message, void* data) {
    switch (message) {
    case MSG_ENABLEDS:
        if (data == nullptr)
            return fail(TWCC_BADVALUE);
        return state_ == State::open ? enable() : fail(TWCC_SEQERROR);
    case MSG_DISABLEDS: // some applications pass no record
        if (state_ != State::enabled)
            return fail(TWCC_SEQERROR);
        state_ = State::open;
        return TWRC_SUCCESS;
    default: // MSG_ENABLEDSUIONLY, too: there is no settings window
        return fail(TWCC_BADPROTOCOL);
    }
}

uint16_t DataSource::enable() {
    ScanStatus status = feed_->start();
    if (status == ScanStatus::good)
        status = fetchPage();
    if (status != ScanStatus::good) {
        const uint16_t returnCode = fail(status);
        feed_->stop();
        return returnCode;
    }
    pagesEnded_ = 0;
    state_ = State::transferReady;
    // The application may transfer every page inside the notification: the batch may be over after
    // it.
    readyNotDelivered_ = true;
    if (notifyTransferReady())
        readyNotDelivered_ = false;
    return TWRC_SUCCESS;
}

// A page with fewer pixels than its format says counts as a failure of the device.
ScanStatus DataSource::fetchPage() {
    page_ = {};
    rowsSent_ = 0;
    pageSent_ = false;
    PageFormat format;
    if (const ScanStatus status = feed_->nextPage(format); status != ScanStatus::good)
        return status;
    const int64_t byteCount = pageByteCount(format);
    if (byteCount == 0 || static_cast<size_t>(byteCount) > feed_->pixels().size())
        return ScanStatus::ioError;
    page_ = format;
    return ScanStatus::good;
}

void DataSource::endBatch() {
    if (!stateIs(State::transferReady, State::transferring))
        return;
    feed_->stop();
    readyNotDelivered_ = false;
    page_ = {};
    state_ = State::enabled;
}

uint16_t DataSource::pendingCount() const {
    const int wanted = capabilities_.transferCount();
    if (!stateIs(State::transferReady, State::transferring))
        return 0;
    // Only the application's own limit says that a page is the last.
    return wanted > 0 && wanted - pagesEnded_ == 1 ? 1 : unknownCount;
}

uint16_t DataSource::pendingTransfersTriplet(uint16_t message, void* data) {
    auto& pending = *static_cast<abi::PendingXfers*>(data);
    switch (message) {
    case MSG_GET:
        if (!stateIs(State::open, State::transferring))
            return fail(TWCC_SEQERROR);
        pending = {pendingCount(), 0};
        return TWRC_SUCCESS;
    case MSG_ENDXFER:
        if (!stateIs(State::transferReady, State::transferring))
            return fail(TWCC_SEQERROR);
        return endTransfer(pending);
    case MSG_RESET:
        if (state_ != State::transferReady)
            return fail(TWCC_SEQERROR);
        endBatch();
        pending = {0, 0};
        return TWRC_SUCCESS;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

uint16_t DataSource::endTransfer(abi::PendingXfers& pending) {
    ++pagesEnded_;
    pending = {0, 0};
    const int wanted = capabilities_.transferCount();
    const bool enough = wanted > 0 && pagesEnded_ >= wanted;
    const ScanStatus status = enough ? ScanStatus::noMorePages : fetchPage();
    if (status == ScanStatus::good) {
        state_ = State::transferReady;
        pending.Count = pendingCount();
        return TWRC_SUCCESS;
    }
    uint16_t returnCode = TWRC_SUCCESS;
    if (status != ScanStatus::noMorePages)
        returnCode = fail(status) == TWRC_CANCEL ? TWRC_CANCEL : TWRC_CHECKSTATUS;
    endBatch();
    return returnCode;
}

} // namespace paperline::sources

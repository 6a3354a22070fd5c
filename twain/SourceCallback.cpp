#include "twain/SourceCallback.h"

#include "controller/AppDelegate.h"
#include "platform/desktop/MainLoop.h"
#include "twain/PageTransfer.h"
#include "twain/TWAINHandler.h"

#include <QPointer>

#include <atomic>

namespace paperline {
namespace {

constexpr double callbackDelaySeconds = 0.1;

// Atomic: the callback may come on any thread.
std::atomic<uint32_t> sessionNumber{0};
std::atomic<bool> transferReady{false};

// Main thread only.
QPointer<AppDelegate>& messageReceiver() {
    static QPointer<AppDelegate> receiver;
    return receiver;
}

// Runs the operation on the main loop, never inside the callback.
void schedule(void (AppDelegate::*operation)(QObject*)) {
    performAfterDelay(callbackDelaySeconds, [operation, session = sessionNumber.load()] {
        if (!messageReceiver().isNull() && session == sessionNumber)
            (messageReceiver()->*operation)(nullptr);
    });
}

TW_UINT16
receiveMessage(TW_IDENTITY*, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16 message, TW_MEMREF) {
    if (message == twain::MSG_XFERREADY) {
        transferReady = true;
        schedule(&AppDelegate::xferReady);
    } else if (message == twain::MSG_CLOSEDSREQ || message == twain::MSG_CLOSEDSOK) {
        schedule(&AppDelegate::closeRequest);
    }
    return twain::TWRC_SUCCESS;
}

} // namespace

void registerSourceCallback(AppDelegate& controller) {
    messageReceiver() = &controller;
    gTWAINHandler->RegisterCallback(receiveMessage, reinterpret_cast<uintptr_t>(&controller));
}

void beginSession() {
    ++sessionNumber;
    transferReady = false;
}

bool takeTransferReady() {
    return transferReady.exchange(false);
}

void discardWaitingPage(TWAINHandler& handler) {
    if (handler.dsEnabled && takeTransferReady())
        discardPendingPages(handler);
}

} // namespace paperline

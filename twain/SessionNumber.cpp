#include "twain/SessionNumber.h"

#include <atomic>

namespace paperline {
namespace {

std::atomic<uint32_t> sessionNumber{0};
std::atomic<bool> transferReady{false};

} // namespace

uint32_t currentSession() {
    return sessionNumber.load();
}

void beginSession() {
    ++sessionNumber;
    transferReady = false;
}

void noteTransferReady() {
    transferReady = true;
}

bool takeTransferReady() {
    return transferReady.exchange(false);
}

} // namespace paperline

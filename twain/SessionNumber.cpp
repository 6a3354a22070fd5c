#include "twain/SessionNumber.h"

#include <atomic>

namespace paperline {
namespace {

std::atomic<uint32_t> sessionNumber{0};

} // namespace

uint32_t currentSession() {
    return sessionNumber.load();
}

void beginSession() {
    ++sessionNumber;
}

} // namespace paperline

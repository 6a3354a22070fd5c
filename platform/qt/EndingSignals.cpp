#include "platform/qt/EndingSignals.h"

#include "platform/desktop/MainLoop.h"
#include "platform/files/Descriptor.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <csignal>
#include <unistd.h>

namespace paperline {
namespace {

constexpr int endingSignals[] = {SIGTERM, SIGINT, SIGHUP};

std::array<Descriptor, 2> endingPipe; // to read, to write
std::atomic<bool> hasCome{false};
static_assert(std::atomic<bool>::is_always_lock_free, "needed in a signal handler");

void noteEndingSignal(int /*number*/) {
    hasCome = true;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(endingPipe[1].number(), &byte, 1);
}

} // namespace

// A handler and a pipe instead of signalfd(2), whose blocked signals helper programs would inherit.
EndingSignals::EndingSignals() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    endingPipe = {Descriptor(ends[0]), Descriptor(ends[1])};
    hasCome = false;
    notifier_ = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [] {
        char byte = 0;
        while (read(endingPipe[0].number(), &byte, 1) == 1)
            requestTermination();
    });
    struct sigaction action {};
    action.sa_handler = noteEndingSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : endingSignals) {
        struct sigaction before {};
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

EndingSignals::~EndingSignals() {
    if (!notifier_)
        return;
    for (const int number : endingSignals) {
        struct sigaction now {};
        if (sigaction(number, nullptr, &now) == 0 && now.sa_handler == noteEndingSignal)
            std::signal(number, SIG_DFL);
    }
    notifier_.reset();
    endingPipe = {};
}

bool endingSignalHasCome() {
    return hasCome;
}

} // namespace paperline

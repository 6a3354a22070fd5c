#include "platform/qt/EndingSignals.h"

#include "platform/desktop/MainLoop.h"

#include <QSocketNotifier>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace paperline {
namespace {

constexpr int endingSignals[] = {SIGTERM, SIGINT, SIGHUP};

int endingPipe[2] = {-1, -1};
std::atomic<bool> hasCome{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

void noteEndingSignal(int /*number*/) {
    hasCome = true;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(endingPipe[1], &byte, 1);
}

} // namespace

// A handler with a pipe, because a blocked signal would stay blocked in the helper programs.
EndingSignals::EndingSignals() {
    if (pipe2(endingPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    hasCome = false;
    notifier_ = std::make_unique<QSocketNotifier>(endingPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [] {
        char byte = 0;
        while (read(endingPipe[0], &byte, 1) == 1)
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
    for (int& end : endingPipe) {
        close(end);
        end = -1;
    }
}

bool endingSignalHasCome() {
    return hasCome;
}

} // namespace paperline

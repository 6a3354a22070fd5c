// Lets SIGTERM, SIGINT and SIGHUP end the application normally.
#pragma once

#include <memory>

class QSocketNotifier;

namespace paperline {

// Handles the signals while it lives. Only one at a time, on the main thread, while the application
// object exists. Signals that were ignored at the start of the process stay ignored.
class EndingSignals {
public:
    EndingSignals();
    ~EndingSignals();
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};

// True once the current or the last EndingSignals received a signal, even if the main loop is too
// busy to react. May be called on any thread.
bool endingSignalHasCome();

} // namespace paperline

// SIGTERM, SIGINT and SIGHUP end the application the normal way.
#pragma once

#include <memory>

class QSocketNotifier;

namespace paperline {

// Lives as long as signals are to be heard; one at a time, made on the main thread behind the
// application object. A signal that the process was started to ignore stays ignored.
class EndingSignals {
public:
    EndingSignals();
    ~EndingSignals();
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};

// True as soon as a signal has come to the present or the last one of these, long before a main
// loop that is busy hears of it. Any thread.
bool endingSignalHasCome();

} // namespace paperline

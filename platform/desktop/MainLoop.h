// The main thread's event loop, implemented in platform/qt/MainLoop.cpp so that users need no Qt.
// Actions are dropped while there is no application object.
#pragma once

#include <functional>

namespace paperline {

// Run the action on the main thread, later or as soon as possible. May be called on any thread.
// Delayed actions wait while a DelayedMessagesHold exists.
void performAfterDelay(double seconds, std::function<void()> action);
void postToMainThread(std::function<void()> action);
bool isMainThread();

// Exists while a modal window is open or a transfer runs. Main thread only.
class DelayedMessagesHold {
public:
    DelayedMessagesHold();
    ~DelayedMessagesHold();
    DelayedMessagesHold(const DelayedMessagesHold&) = delete;
    DelayedMessagesHold& operator=(const DelayedMessagesHold&) = delete;
};

bool delayedMessagesAreHeld();

// Ends the main loop once; returns at once.
void requestTermination();
bool terminationRequested();
void resetTerminationRequest(); // for tests

// Repaints windows during a long transfer without handling user input.
void repaintWithoutInput();

} // namespace paperline

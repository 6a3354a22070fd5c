// The main thread's event loop: delayed messages, posting from other threads, termination.
// platform/qt/MainLoop.cpp does it with Qt; nothing of Qt shows here. Without an application object
// (before it starts, after it ends) actions are dropped.
#pragma once

#include <functional>

namespace paperline {

// Runs the action on the main thread after the delay. Any thread may call. While a hold is active
// the action waits; it then runs when the last hold ends.
void performAfterDelay(double seconds, std::function<void()> action);

// Runs the action on the main thread as soon as its loop turns. Any thread may call.
void postToMainThread(std::function<void()> action);
bool isMainThread();

// Delayed messages wait while one of these lives: a modal window or a transfer is on. Main thread.
class DelayedMessagesHold {
public:
    DelayedMessagesHold();
    ~DelayedMessagesHold();
    DelayedMessagesHold(const DelayedMessagesHold&) = delete;
    DelayedMessagesHold& operator=(const DelayedMessagesHold&) = delete;
};

bool delayedMessagesAreHeld();

// Asks the application to end the normal way; returns to the caller. Later calls change nothing.
void requestTermination();
bool terminationRequested();
void resetTerminationRequest(); // tests

// Lets windows repaint during a long transfer without handling any user input.
void repaintWithoutInput();

} // namespace paperline

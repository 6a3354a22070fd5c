// What a data source tells the application between calls: a page is ready, its window was closed.
#pragma once

namespace paperline {

class AppDelegate;
class TWAINHandler;

// Registers the callback with the manager. From now on the sources' messages go to this controller,
// on its main loop.
void registerSourceCallback(AppDelegate& controller);

// Before MSG_ENABLEDS, during which a source may call back already. Messages of an earlier session
// that arrive late are dropped from here on.
void beginSession();

// Whether the source has announced a page that is not fetched yet. The answer forgets it.
bool takeTransferReady();

// Discards such a page: with it the source can be neither disabled nor closed.
void discardWaitingPage(TWAINHandler& handler);

} // namespace paperline

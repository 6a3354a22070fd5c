// The worker's half: calls a device at a data source's request and passes its pages on in shared
// memory.
#pragma once

#include "sources/worker/ScanDevice.h"

#include <functional>
#include <string>

namespace paperline::sources {

// Serves on the socket until the other side closes it. Every call of the device comes from one
// thread of its own, except cancel(). `closing` is called when the socket has closed, before the
// device is waited for.
void serveDevice(ScanDevice& device,
                 int socket,
                 const std::string& product,
                 const std::function<void()>& closing = {});

} // namespace paperline::sources

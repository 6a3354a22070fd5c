// The worker's half: drives a device at a data source's request and carries its pages over shared
// memory.
#pragma once

#include "sources/worker/ScanDevice.h"

#include <functional>
#include <string>

namespace paperline::sources {

struct WorkerArguments {
    enum class Mode { none, serve, describe };
    Mode mode = Mode::none;
    std::string device;
    std::string product;
};

// `--serve --device D --product P` (the data source starts it so; its socket is descriptor 3), or
// `--describe D [--product P]`.
WorkerArguments parseWorkerArguments(int argc, const char* const* argv);

// The whole life of a worker program that holds this device; its result is the program's exit
// status (2: wrong arguments, 1: the device to be described did not open).
//
// Serving: every call of the device comes from one thread of its own, cancel() apart. It ends when
// the data source closes the device or is gone; a device that does not let go then takes its whole
// process group with it.
//
// Describing prints the options after those stored and given in PAPERLINE_SOURCE_OPTIONS were
// applied, one a line, with tabs between: name, kind (bool, int, fixed, string, button), value,
// unit, choices ("a|b|c") or range ("1..1200" or "0..200 step 0.5"), title.
int runWorker(ScanDevice& device, int argc, const char* const* argv);

// Serves on the socket until the other side closes it; runWorker without the program around it.
// `closing` is called when that has happened, before the device is waited for.
void serveDevice(ScanDevice& device,
                 int socket,
                 const std::string& product,
                 const std::function<void()>& closing = {});

// Points standard output at standard error, because drivers print where they like, and returns a
// descriptor of what standard output was.
int divertStandardOutput();

} // namespace paperline::sources

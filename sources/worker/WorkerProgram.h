// The main function of worker programs: their arguments, and their end when the parent process
// ends.
#pragma once

#include "sources/worker/ScanDevice.h"

#include <string>

namespace paperline::sources {

struct WorkerArguments {
    enum class Mode { none, serve, describe };
    Mode mode = Mode::none;
    std::string device;
    std::string product;
};

// `--serve --device D --product P` (from the data source; its socket is descriptor 3), or
// `--describe D [--product P]`.
WorkerArguments parseWorkerArguments(int argc, const char* const* argv);

// The whole life of a worker program with this device. Gives the exit status: 2 for wrong
// arguments, 1 when the device to be described does not open.
//
// Serving ends when the data source closes the device or is gone. A device that does not stop in
// time is then killed with its whole process group.
//
// Describing applies the stored options and PAPERLINE_SOURCE_OPTIONS, then prints the options, one
// a line with tabs between: name, kind (bool, int, fixed, string, button), value, unit, choices
// ("a|b|c") or range ("1..1200" or "0..200 step 0.5"), title.
int runWorker(ScanDevice& device, int argc, const char* const* argv);

// Sends standard output to standard error, because drivers print to it, and returns a descriptor of
// the original.
int divertStandardOutput();

} // namespace paperline::sources

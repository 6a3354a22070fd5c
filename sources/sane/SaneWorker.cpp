// The worker program of SANE devices: serves or describes one of them, or discovers all.
#include "sources/sane/DeviceListing.h"
#include "sources/sane/Discovery.h"
#include "sources/sane/LibsaneScanner.h"
#include "sources/sane/SaneDevice.h"
#include "sources/worker/WorkerProgram.h"

#include <string_view>

using namespace paperline::sources;

int main(int argc, char** argv) {
    const std::string_view mode = argc > 1 ? argv[1] : "";
    if (mode == "--discover" && argc == 3)
        return runDiscovery(argv[2], divertStandardOutput());
    if (mode == "--list-devices" && argc == 2)
        return sendDeviceList();
    SaneDevice device(parseWorkerArguments(argc, argv).device, makeLibsaneScanner());
    return runWorker(device, argc, argv);
}

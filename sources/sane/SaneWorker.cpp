// The worker program of SANE devices.
#include "sources/sane/SaneDevice.h"
#include "sources/worker/WorkerServer.h"

using namespace paperline::sources;

int main(int argc, char** argv) {
    SaneDevice device(parseWorkerArguments(argc, argv).device, makeLibsaneScanner());
    return runWorker(device, argc, argv);
}

// The faulty scanner's worker program.
#include "sources/worker/WorkerProgram.h"
#include "tests/sources/faulty/FaultyDevice.h"

int main(int argc, char** argv) {
    paperline::sources::FaultyDevice device;
    return paperline::sources::runWorker(device, argc, argv);
}

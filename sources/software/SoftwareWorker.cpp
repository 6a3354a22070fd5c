// The software scanner's worker program.
#include "sources/software/SoftwareDevice.h"
#include "sources/worker/WorkerProgram.h"

int main(int argc, char** argv) {
    paperline::sources::SoftwareDevice device;
    return paperline::sources::runWorker(device, argc, argv);
}

// paperline-describe-source BUNDLE: runs the worker of the data source in the bundle, which lists
// its options (WorkerProgram.h). Exit status 1: no such source, or it did not open.
#include "sources/framework/SourceConfiguration.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <unistd.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: paperline-describe-source BUNDLE\n", stderr);
        return 2;
    }
    const auto source = paperline::sources::readSourceConfiguration(argv[1]);
    if (!source) {
        std::fprintf(stderr, "%s is no data source that has options.\n", argv[1]);
        return 1;
    }
    execl(source->worker.c_str(),
          source->worker.c_str(),
          "--describe",
          source->device.c_str(),
          "--product",
          source->product.c_str(),
          nullptr);
    std::fprintf(stderr, "%s: %s\n", source->worker.c_str(), std::strerror(errno));
    return 1;
}

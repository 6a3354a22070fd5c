// The program with its window under any brand: paperline-brands NUMBER.
#include "app/WindowSession.h"
#include "controller/AppDelegate.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: paperline-brands NUMBER\n", stderr);
        return 2;
    }
    paperline::LaunchOptions options;
    options.brand = static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 10));
    return paperline::runWindowSession(argc, argv, options);
}

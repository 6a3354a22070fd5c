// Prints the bundle path that a program finds at the place it was copied to.
#include "platform/places/Places.h"

#include <cstdio>

int main() {
    std::puts(paperline::bundlePath().c_str());
}

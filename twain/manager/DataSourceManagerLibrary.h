// The data source manager's shared library. Main thread only.
#pragma once

#include "twain/records/StandardRecords.h"

#include <string>

namespace paperline {

struct DsmLibrary {
    std::string file;
    twain::abi::EntryFunction entry = nullptr;
    // The manager's memory functions. Null until it is asked for them, and with managers of the
    // first standard, whose handles are blocks of the C library.
    twain::abi::EntryPoint entryPoint{};
};

// PAPERLINE_DSM, or the library in the bundle's Frameworks folder.
std::string dataSourceManagerFile();

// Loads that file. With `keepOther`, a library that is already loaded from another file stays in
// use. Null, and once a line in the system's log, when it cannot be loaded. Libraries are never
// unloaded: sources may have threads that run in them.
DsmLibrary* loadDsmLibrary(bool keepOther);
// The library in use; null before the first loading.
const DsmLibrary* currentDsmLibrary();

} // namespace paperline

// The data source manager's shared library.
#pragma once

#include "twain/records/StandardRecords.h"

#include <memory>
#include <string>

namespace paperline {

struct DsmLibrary {
    std::string file;
    twain::abi::EntryFunction entry = nullptr;
    // The manager's memory functions; null until it has told them, and with managers of the first
    // standard, whose handles are blocks of the C library.
    twain::abi::EntryPoint entryPoint{};
};

// Null when the file cannot be loaded or has no DSM_Entry; `error` says why. A library stays loaded
// to the end of the process: sources may have threads that run through it.
std::unique_ptr<DsmLibrary> loadDsmLibrary(const std::string& file, std::string& error);

// The library in use; null until the application has called it.
const DsmLibrary* currentDsmLibrary();

} // namespace paperline

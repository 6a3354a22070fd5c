// One data source's shared object.
#pragma once

#include "dsm/SourceFiles.h"
#include "twain/records/StandardRecords.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace paperline::dsm {

using twain::abi::Identity;

struct Triplet {
    uint32_t group;
    uint16_t type;
    uint16_t message;
};

// A source that was opened once stays in memory: it may have threads that still run its code.
class SourceLibrary {
public:
    // Null when the file is no shared object or has no DS_Entry; `error` says which.
    static std::shared_ptr<SourceLibrary> load(const std::string& path, std::string& error);
    ~SourceLibrary();
    SourceLibrary(const SourceLibrary&) = delete;
    SourceLibrary& operator=(const SourceLibrary&) = delete;

    // The source's code: no lock may be held by the caller.
    uint16_t call(Identity* origin, const Triplet& triplet, void* data) const;
    void keepInMemory() { keep_ = true; }

private:
    SourceLibrary(void* handle, twain::abi::SourceEntryFunction entry)
        : handle_(handle), entry_(entry) {}

    void* handle_;
    twain::abi::SourceEntryFunction entry_;
    std::atomic<bool> keep_ = false;
};

struct Source {
    Identity identity; // as the source told it, with the manager's Id
    std::shared_ptr<SourceLibrary> library;
};

// Loads the files and asks each for its identity in the application's name. One that does not
// answer is left out with a line in the log. Ids are still 0.
std::vector<Source> loadSources(const std::vector<SourceFile>& files, const Identity& application);

// The number by value: in the packed record it may lie at an address that no reference can have.
inline uint32_t idOf(const Identity& identity) {
    return identity.Id;
}

// Sets the last byte of every string to zero: nobody's text runs on into the next field.
void endStrings(Identity& identity);

} // namespace paperline::dsm

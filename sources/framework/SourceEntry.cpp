#include "sources/framework/SourceEntry.h"

#include <map>
#include <mutex>
#include <string>

namespace paperline::sources {

namespace {

// Made at the bundle's first call and kept for the life of the process; null when the bundle's
// configuration cannot be read.
DataSource* sourceOf(const std::string& bundlePath) {
    static std::mutex mutex;
    static std::map<std::string, std::unique_ptr<DataSource>> sources;
    const std::lock_guard lock(mutex);
    auto found = sources.find(bundlePath);
    if (found == sources.end()) {
        const auto configuration = readSourceConfiguration(bundlePath);
        if (!configuration)
            return nullptr;
        found = sources.emplace(bundlePath, makeDataSource(*configuration)).first;
    }
    return found->second.get();
}

} // namespace

} // namespace paperline::sources

uint16_t paperlineSourceEntry(const char* bundlePath,
                              twain::abi::Identity* origin,
                              uint32_t dataGroup,
                              uint16_t dataArgumentType,
                              uint16_t message,
                              void* data) {
    if (bundlePath == nullptr)
        return twain::TWRC_FAILURE;
    auto* source = paperline::sources::sourceOf(bundlePath);
    if (source == nullptr)
        return twain::TWRC_FAILURE;
    return source->entry(origin, {dataGroup, dataArgumentType, message}, data);
}

#include "sources/framework/SourceEntry.h"

#include <map>
#include <mutex>
#include <string>

namespace paperline::sources {

namespace {

class SourceRegistry {
public:
    // The bundle's one data source, made at its first call; null when its configuration cannot be
    // read. Stays for the life of the process.
    TripletHandler* of(const std::string& bundlePath) {
        const std::lock_guard lock(mutex_);
        auto found = sources_.find(bundlePath);
        if (found == sources_.end()) {
            auto configuration = readSourceConfiguration(bundlePath);
            if (!configuration)
                return nullptr;
            found = sources_.emplace(bundlePath, makeDataSource(*configuration)).first;
        }
        return found->second.get();
    }

private:
    std::mutex mutex_;
    std::map<std::string, std::unique_ptr<TripletHandler>> sources_;
};

SourceRegistry& registry() {
    static SourceRegistry instance;
    return instance;
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
    auto* source = paperline::sources::registry().of(bundlePath);
    if (source == nullptr)
        return twain::TWRC_FAILURE;
    return source->entry(origin, {dataGroup, dataArgumentType, message}, data);
}

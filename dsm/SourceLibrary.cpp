#include "dsm/SourceLibrary.h"

#include "dsm/Log.h"
#include "platform/host/Environment.h"

#include <dlfcn.h>

#include <optional>

namespace paperline::dsm {
namespace {

std::string lastLoaderError() {
    const char* text = ::dlerror();
    return text != nullptr ? text : "unknown error";
}

std::optional<Source> loadSource(const std::string& path, const Identity& application) {
    std::string error;
    Source source{{}, SourceLibrary::load(path, error)};
    if (!source.library) {
        logLine(path + ": not loaded: " + error);
        return std::nullopt;
    }
    Identity origin = application;
    const uint16_t code = source.library->call(
        &origin, {twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_GET}, &source.identity);
    endStrings(source.identity);
    if (code != twain::TWRC_SUCCESS) {
        logLine(path + ": does not tell its identity: return code " + std::to_string(code));
        return std::nullopt;
    }
    if (source.identity.ProductName[0] == '\0') {
        logLine(path + ": has no product name");
        return std::nullopt;
    }
    source.identity.Id = 0;
    return source;
}

} // namespace

std::shared_ptr<SourceLibrary> SourceLibrary::load(const std::string& path, std::string& error) {
    void* handle = ::dlopen(path.c_str(), RTLD_LOCAL | RTLD_NOW);
    if (handle == nullptr) {
        error = lastLoaderError();
        return nullptr;
    }
    void* entry = ::dlsym(handle, "DS_Entry");
    if (entry == nullptr) {
        error = "has no DS_Entry";
        ::dlclose(handle);
        return nullptr;
    }
    return std::shared_ptr<SourceLibrary>(
        new SourceLibrary(handle, reinterpret_cast<twain::abi::SourceEntryFunction>(entry)));
}

SourceLibrary::~SourceLibrary() {
    if (!keep_)
        ::dlclose(handle_);
}

uint16_t SourceLibrary::call(Identity* origin, const Triplet& triplet, void* data) const {
    return entry_(origin, triplet.group, triplet.type, triplet.message, data);
}

void endStrings(Identity& identity) {
    constexpr size_t last = sizeof(twain::abi::Str32) - 1;
    identity.Version.Info[last] = '\0';
    identity.Manufacturer[last] = '\0';
    identity.ProductFamily[last] = '\0';
    identity.ProductName[last] = '\0';
}

std::vector<Source> loadSources(const std::vector<SourceFile>& files, const Identity& application) {
    std::vector<Source> sources;
    const bool all = !environment("PAPERLINE_SOFTWARE_SCANNER").empty();
    for (const SourceFile& file : files)
        if (all || !file.fallback)
            if (std::optional<Source> source = loadSource(file.path, application))
                sources.push_back(std::move(*source));
    if (!sources.empty() || all)
        return sources;
    for (const SourceFile& file : files)
        if (file.fallback)
            if (std::optional<Source> source = loadSource(file.path, application))
                sources.push_back(std::move(*source));
    return sources;
}

} // namespace paperline::dsm

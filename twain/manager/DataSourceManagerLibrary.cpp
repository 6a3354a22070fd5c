#include "twain/manager/DataSourceManagerLibrary.h"

#include "platform/host/Environment.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

#include <dlfcn.h>
#include <memory>

namespace paperline {
namespace {

std::unique_ptr<DsmLibrary> current;
std::string fileThatFailed; // so that its line is logged once

std::unique_ptr<DsmLibrary> load(const std::string& file, std::string& error) {
    void* handle = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr) {
        const char* text = ::dlerror();
        error = text != nullptr ? text : "cannot be loaded";
        return nullptr;
    }
    void* entry = ::dlsym(handle, "DSM_Entry");
    if (entry == nullptr) {
        error = file + " has no DSM_Entry";
        ::dlclose(handle);
        return nullptr;
    }
    return std::make_unique<DsmLibrary>(
        DsmLibrary{file, reinterpret_cast<twain::abi::EntryFunction>(entry), {}});
}

} // namespace

std::string dataSourceManagerFile() {
    const std::string file = environment("PAPERLINE_DSM");
    return file.empty() ? bundlePath() + "/Contents/Frameworks/libpaperline-dsm.so" : file;
}

DsmLibrary* loadDsmLibrary(bool keepOther) {
    const std::string file = dataSourceManagerFile();
    if (current && (keepOther || current->file == file))
        return current.get();
    std::string error;
    current = load(file, error);
    if (!current && fileThatFailed != file)
        systemLog("The data source manager cannot be loaded: " + error);
    fileThatFailed = current ? std::string() : file;
    return current.get();
}

const DsmLibrary* currentDsmLibrary() {
    return current.get();
}

} // namespace paperline

#include "twain/manager/DataSourceManagerLibrary.h"

#include <dlfcn.h>

namespace paperline {

std::unique_ptr<DsmLibrary> loadDsmLibrary(const std::string& file, std::string& error) {
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
    auto library = std::make_unique<DsmLibrary>();
    library->file = file;
    library->entry = reinterpret_cast<twain::abi::EntryFunction>(entry);
    return library;
}

} // namespace paperline

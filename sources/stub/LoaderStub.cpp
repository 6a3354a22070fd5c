// The executable of every data source bundle. Finds its own bundle, loads the library named in the
// bundle's source.conf once, and forwards every call to it. Each bundle holds a copy, not a link:
// the dynamic linker gives all links of one file one handle, and the stub could not tell its
// bundle.
//
// Uses the C library only, so that it loads into any program whatever its C++ runtime is.
#include <dlfcn.h>
#include <limits.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

extern "C" __attribute__((visibility("default"))) uint16_t
DS_Entry(void* origin, uint32_t dataGroup, uint16_t dataArgumentType, uint16_t message, void* data);

namespace {

using SourceEntry =
    uint16_t (*)(const char* bundlePath, void* origin, uint32_t, uint16_t, uint16_t, void* data);

constexpr uint16_t returnCodeFailure = 1;

char bundlePath[PATH_MAX];
SourceEntry sourceEntry = nullptr;
pthread_once_t loading = PTHREAD_ONCE_INIT;

// The stub is NAME.ds/Versions/A/FILE: the bundle is three levels up.
bool findBundle() {
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(&DS_Entry), &info) == 0 ||
        realpath(info.dli_fname, bundlePath) == nullptr)
        return false;
    for (int level = 0; level < 3; ++level) {
        char* slash = strrchr(bundlePath, '/');
        if (slash == nullptr || slash == bundlePath)
            return false;
        *slash = '\0';
    }
    return true;
}

bool readLibraryLine(FILE* configuration, char* library, size_t size) {
    static const char key[] = "library=";
    char line[PATH_MAX + sizeof key];
    while (fgets(line, sizeof line, configuration) != nullptr) {
        if (strncmp(line, key, sizeof key - 1) != 0)
            continue;
        line[strcspn(line, "\r\n")] = '\0';
        const int length = snprintf(library, size, "%s", line + sizeof key - 1);
        return length > 0 && static_cast<size_t>(length) < size;
    }
    return false;
}

// Relative paths start at the bundle.
bool findLibrary(char (&path)[PATH_MAX]) {
    char library[PATH_MAX];
    int length = snprintf(path, sizeof path, "%s/Versions/A/Resources/source.conf", bundlePath);
    if (length < 0 || static_cast<size_t>(length) >= sizeof path)
        return false;
    FILE* configuration = fopen(path, "re");
    if (configuration == nullptr)
        return false;
    const bool found = readLibraryLine(configuration, library, sizeof library);
    fclose(configuration);
    if (!found)
        return false;
    length = library[0] == '/' ? snprintf(path, sizeof path, "%s", library)
                               : snprintf(path, sizeof path, "%s/%s", bundlePath, library);
    return length > 0 && static_cast<size_t>(length) < sizeof path;
}

void load() {
    char path[PATH_MAX];
    if (!findBundle() || !findLibrary(path)) {
        fprintf(stderr, "paperline: a data source bundle names no library: %s\n", bundlePath);
        return;
    }
    // Never unloaded: its threads and data sources live as long as the process.
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr) {
        fprintf(stderr, "paperline: %s\n", dlerror());
        return;
    }
    sourceEntry = reinterpret_cast<SourceEntry>(dlsym(handle, "paperlineSourceEntry"));
}

} // namespace

uint16_t DS_Entry(
    void* origin, uint32_t dataGroup, uint16_t dataArgumentType, uint16_t message, void* data) {
    pthread_once(&loading, load);
    if (sourceEntry == nullptr)
        return returnCodeFailure;
    return sourceEntry(bundlePath, origin, dataGroup, dataArgumentType, message, data);
}

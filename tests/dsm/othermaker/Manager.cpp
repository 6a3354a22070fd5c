// Another maker's data source manager, as small as the standard allows. It differs from Paperline's
// where the standard leaves room, so that a program or a source that works with both rests on the
// standard alone:
//   - it takes a callback only together with an open source (TWCC_BADDEST without);
//   - MSG_OPENDS wants the whole identity back that it handed out, SupportedGroups included;
//   - a source is in memory only while it is asked for its identity and while it is open;
//   - only sources that claim DF_DS2 learn the entry point;
//   - its memory handles are no pointers to the memory.
// OTHERMAKER_DSM_SOURCES names its sources: shared objects, or folders whose *.ds files count,
// separated by colons.
#include "Twain2.h"

#include <dirent.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct Source {
    std::string path;
    TW_IDENTITY identity{};
    void* handle = nullptr; // while it is open
    DSENTRYPROC entry = nullptr;
    DSMENTRYPROC callback = nullptr;
    TW_UINTPTR refCon = 0;
};

// One application is enough here.
struct State {
    bool open = false;
    TW_IDENTITY* application = nullptr;
    std::vector<std::unique_ptr<Source>> sources;
    size_t next = 0;
    TW_UINT16 condition = TWCC_SUCCESS;
};

State state;
std::mutex guard; // of callbacks: sources report from threads of their own

TW_UINT16 fail(TW_UINT16 condition) {
    state.condition = condition;
    return TWRC_FAILURE;
}

struct Block {
    void* memory;
};

TW_HANDLE allocate(TW_UINT32 bytes) {
    return new Block{std::calloc(1, bytes)};
}

void release(TW_HANDLE handle) {
    auto* block = static_cast<Block*>(handle);
    std::free(block->memory);
    delete block;
}

TW_MEMREF lockMemory(TW_HANDLE handle) {
    return static_cast<Block*>(handle)->memory;
}

void unlockMemory(TW_HANDLE) {}

TW_ENTRYPOINT entryPoint();

std::vector<std::string> filesOf(const std::string& place) {
    DIR* folder = opendir(place.c_str());
    if (folder == nullptr)
        return {place};
    std::vector<std::string> files;
    while (const dirent* entry = readdir(folder))
        if (std::strstr(entry->d_name, ".ds") != nullptr)
            files.push_back(place + "/" + entry->d_name);
    closedir(folder);
    std::sort(files.begin(), files.end());
    return files;
}

bool load(Source& source) {
    source.handle = dlopen(source.path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (source.handle == nullptr)
        return false;
    source.entry = reinterpret_cast<DSENTRYPROC>(dlsym(source.handle, "DS_Entry"));
    return source.entry != nullptr;
}

void unload(Source& source) {
    if (source.handle != nullptr)
        dlclose(source.handle);
    source.handle = nullptr;
    source.entry = nullptr;
    source.callback = nullptr;
}

void findSources() {
    const char* places = std::getenv("OTHERMAKER_DSM_SOURCES");
    std::string rest = places != nullptr ? places : "";
    TW_UINT32 id = 0;
    while (!rest.empty()) {
        const size_t colon = std::min(rest.find(':'), rest.size());
        for (const std::string& file : filesOf(rest.substr(0, colon))) {
            auto source = std::make_unique<Source>();
            source->path = file;
            if (load(*source) &&
                source->entry(
                    state.application, DG_CONTROL, DAT_IDENTITY, MSG_GET, &source->identity) ==
                    TWRC_SUCCESS) {
                source->identity.Id = ++id;
                unload(*source);
                state.sources.push_back(std::move(source));
            } else {
                unload(*source);
            }
        }
        rest.erase(0, colon + 1);
    }
}

Source* find(const TW_IDENTITY* identity) {
    for (const auto& source : state.sources)
        if (identity != nullptr && source->identity.Id == identity->Id)
            return source.get();
    return nullptr;
}

TW_UINT16 openSource(TW_IDENTITY* identity) {
    Source* source = find(identity);
    if (source == nullptr || std::memcmp(&source->identity, identity, sizeof(TW_IDENTITY)) != 0)
        return fail(TWCC_BADVALUE);
    if (source->handle != nullptr)
        return fail(TWCC_SEQERROR);
    if (!load(*source))
        return fail(TWCC_OPERATIONERROR);
    if ((source->identity.SupportedGroups & DF_DS2) != 0) {
        TW_ENTRYPOINT ownEntry = entryPoint();
        source->entry(state.application, DG_CONTROL, DAT_ENTRYPOINT, MSG_SET, &ownEntry);
    }
    const TW_UINT16 code =
        source->entry(state.application, DG_CONTROL, DAT_IDENTITY, MSG_OPENDS, identity);
    if (code != TWRC_SUCCESS) {
        TW_STATUS status{};
        source->entry(state.application, DG_CONTROL, DAT_STATUS, MSG_GET, &status);
        state.condition = status.ConditionCode;
        unload(*source);
    }
    return code;
}

TW_UINT16 closeSource(TW_IDENTITY* identity) {
    Source* source = find(identity);
    if (source == nullptr || source->handle == nullptr)
        return fail(TWCC_SEQERROR);
    const TW_UINT16 code =
        source->entry(state.application, DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, identity);
    if (code == TWRC_SUCCESS)
        unload(*source);
    return code;
}

TW_UINT16 identityCall(TW_UINT16 message, TW_IDENTITY* identity) {
    switch (message) {
    case MSG_GETFIRST:
        state.next = 0;
        [[fallthrough]];
    case MSG_GETNEXT:
        if (state.sources.empty())
            return fail(TWCC_NODS);
        if (state.next == state.sources.size())
            return TWRC_ENDOFLIST;
        *identity = state.sources[state.next++]->identity;
        return TWRC_SUCCESS;
    case MSG_GETDEFAULT:
        if (state.sources.empty())
            return fail(TWCC_NODS);
        *identity = state.sources.front()->identity;
        return TWRC_SUCCESS;
    case MSG_OPENDS:
        return openSource(identity);
    case MSG_CLOSEDS:
        return closeSource(identity);
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

TW_UINT16 parentCall(TW_IDENTITY* origin, TW_UINT16 message) {
    if (message == MSG_OPENDSM) {
        if (state.open)
            return fail(TWCC_SEQERROR);
        state = State{};
        state.open = true;
        state.application = origin;
        origin->Id = 77;
        origin->SupportedGroups |= DF_DSM2;
        findSources();
        return TWRC_SUCCESS;
    }
    if (message != MSG_CLOSEDSM || !state.open)
        return fail(TWCC_SEQERROR);
    for (const auto& source : state.sources)
        if (source->handle != nullptr)
            return fail(TWCC_SEQERROR);
    state.open = false;
    return TWRC_SUCCESS;
}

TW_UINT16 registerCallback(TW_IDENTITY* destination, TW_UINT16 type, TW_MEMREF data) {
    Source* source = find(destination);
    if (source == nullptr || source->handle == nullptr)
        return fail(TWCC_BADDEST);
    const std::lock_guard lock(guard);
    if (type == DAT_CALLBACK) {
        const auto* record = static_cast<TW_CALLBACK*>(data);
        source->callback = reinterpret_cast<DSMENTRYPROC>(record->CallBackProc);
        source->refCon = record->RefCon;
    } else {
        const auto* record = static_cast<TW_CALLBACK2*>(data);
        source->callback = reinterpret_cast<DSMENTRYPROC>(record->CallBackProc);
        source->refCon = record->RefCon;
    }
    return TWRC_SUCCESS;
}

TW_UINT16 sourceMessage(TW_IDENTITY* origin, TW_IDENTITY* destination, TW_UINT16 message) {
    DSMENTRYPROC callback = nullptr;
    TW_UINTPTR refCon = 0;
    {
        const std::lock_guard lock(guard);
        if (const Source* source = find(origin)) {
            callback = source->callback;
            refCon = source->refCon;
        }
    }
    if (callback == nullptr)
        return TWRC_FAILURE;
    return callback(
        origin, destination, DG_CONTROL, DAT_NULL, message, reinterpret_cast<TW_MEMREF>(refCon));
}

TW_UINT16 forward(TW_IDENTITY* origin,
                  TW_IDENTITY* destination,
                  TW_UINT32 group,
                  TW_UINT16 type,
                  TW_UINT16 message,
                  TW_MEMREF data) {
    const Source* source = find(destination);
    if (source == nullptr)
        return fail(TWCC_BADDEST);
    if (source->handle == nullptr)
        return fail(TWCC_SEQERROR);
    return source->entry(origin, group, type, message, data);
}

TW_UINT16 controlCall(TW_IDENTITY* destination, TW_UINT16 type, TW_UINT16 message, TW_MEMREF data) {
    switch (type) {
    case DAT_IDENTITY:
        return identityCall(message, static_cast<TW_IDENTITY*>(data));
    case DAT_CALLBACK:
    case DAT_CALLBACK2:
        return message == MSG_REGISTER_CALLBACK ? registerCallback(destination, type, data)
                                                : fail(TWCC_BADPROTOCOL);
    case DAT_STATUS: {
        auto* status = static_cast<TW_STATUS*>(data);
        status->ConditionCode = state.condition;
        status->Data = 0;
        state.condition = TWCC_SUCCESS;
        return TWRC_SUCCESS;
    }
    case DAT_ENTRYPOINT:
        *static_cast<TW_ENTRYPOINT*>(data) = entryPoint();
        return TWRC_SUCCESS;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

} // namespace

extern "C" __attribute__((visibility("default"))) TW_UINT16 DSM_Entry(TW_IDENTITY* origin,
                                                                      TW_IDENTITY* destination,
                                                                      TW_UINT32 group,
                                                                      TW_UINT16 type,
                                                                      TW_UINT16 message,
                                                                      TW_MEMREF data) {
    if (group == DG_CONTROL && type == DAT_NULL)
        return sourceMessage(origin, destination, message);
    if (group == DG_CONTROL && type == DAT_PARENT)
        return parentCall(origin, message);
    if (!state.open || origin->Id != 77)
        return fail(TWCC_SEQERROR);
    const bool callback = group == DG_CONTROL && (type == DAT_CALLBACK || type == DAT_CALLBACK2);
    if (destination != nullptr && !callback)
        return forward(origin, destination, group, type, message, data);
    return group == DG_CONTROL ? controlCall(destination, type, message, data) : fail(TWCC_BADDEST);
}

namespace {

TW_ENTRYPOINT entryPoint() {
    return {sizeof(TW_ENTRYPOINT), &DSM_Entry, &allocate, &release, &lockMemory, &unlockMemory};
}

} // namespace

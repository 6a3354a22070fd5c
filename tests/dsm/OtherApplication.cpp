#include "OtherApplication.h"

#include <dlfcn.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace paperline::test {
namespace {

std::mutex mutex;
std::condition_variable arrived;
std::vector<ReceivedMessage> received;

TW_UINT16 receive(TW_IDENTITY* source,
                  TW_IDENTITY* application,
                  TW_UINT32,
                  TW_UINT16,
                  TW_UINT16 message,
                  TW_MEMREF data) {
    const std::lock_guard lock(mutex);
    received.push_back({source->ProductName,
                        application->ProductName,
                        message,
                        reinterpret_cast<TW_UINTPTR>(data)});
    arrived.notify_all();
    return TWRC_SUCCESS;
}

} // namespace

OtherApplication::OtherApplication(const std::string& managerFile, const std::string& productName) {
    void* library = ::dlopen(managerFile.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(::dlerror());
    entry = reinterpret_cast<DSMENTRYPROC>(::dlsym(library, "DSM_Entry"));
    identity.ProtocolMajor = 2;
    identity.ProtocolMinor = 4;
    identity.SupportedGroups = DG_CONTROL | DG_IMAGE | DF_APP2;
    std::strcpy(identity.Manufacturer, "Othermaker");
    std::strncpy(identity.ProductName, productName.c_str(), sizeof(identity.ProductName) - 1);
}

TW_UINT16 OtherApplication::enable(TW_IDENTITY& it, TW_UINT16 message) {
    TW_USERINTERFACE none{};
    return source(it, DAT_USERINTERFACE, message, &none);
}

TW_UINT16 OtherApplication::finish(TW_IDENTITY& it) {
    TW_PENDINGXFERS pending{};
    source(it, DAT_PENDINGXFERS, MSG_RESET, &pending);
    return enable(it, MSG_DISABLEDS);
}

TW_UINT16 OtherApplication::condition() {
    TW_STATUS status{99, 99};
    return control(DAT_STATUS, MSG_GET, &status) == TWRC_SUCCESS ? status.ConditionCode : 0xffff;
}

TW_UINT16 OtherApplication::conditionOf(TW_IDENTITY& it) {
    TW_STATUS status{99, 99};
    return source(it, DAT_STATUS, MSG_GET, &status) == TWRC_SUCCESS ? status.ConditionCode : 0xffff;
}

std::vector<TW_IDENTITY> OtherApplication::sources() {
    std::vector<TW_IDENTITY> list;
    TW_IDENTITY next{};
    for (TW_UINT16 code = control(DAT_IDENTITY, MSG_GETFIRST, &next); code == TWRC_SUCCESS;
         code = control(DAT_IDENTITY, MSG_GETNEXT, &next))
        list.push_back(next);
    return list;
}

std::vector<std::string> OtherApplication::sourceNames() {
    std::vector<std::string> names;
    for (const TW_IDENTITY& each : sources())
        names.emplace_back(each.ProductName);
    return names;
}

TW_IDENTITY OtherApplication::named(const std::string& productName) {
    for (const TW_IDENTITY& each : sources())
        if (productName == each.ProductName)
            return each;
    return {};
}

TW_UINT16 OtherApplication::registerCallback(TW_IDENTITY* destination, TW_UINTPTR refCon) {
    TW_CALLBACK record{
        reinterpret_cast<TW_MEMREF>(&receive), static_cast<TW_UINT32>(refCon), MSG_NULL};
    return entry(&identity, destination, DG_CONTROL, DAT_CALLBACK, MSG_REGISTER_CALLBACK, &record);
}

TW_UINT16 OtherApplication::registerCallback2(TW_IDENTITY* destination, TW_UINTPTR refCon) {
    TW_CALLBACK2 record{reinterpret_cast<TW_MEMREF>(&receive), refCon, MSG_NULL};
    return entry(&identity, destination, DG_CONTROL, DAT_CALLBACK2, MSG_REGISTER_CALLBACK, &record);
}

std::vector<ReceivedMessage> takeMessages() {
    const std::lock_guard lock(mutex);
    return std::exchange(received, {});
}

std::vector<ReceivedMessage> waitForMessages(size_t count) {
    std::unique_lock lock(mutex);
    arrived.wait_for(lock, std::chrono::minutes(1), [&] { return received.size() >= count; });
    return std::exchange(received, {});
}

} // namespace paperline::test

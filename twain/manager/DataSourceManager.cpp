#include "twain/manager/DataSourceManager.h"

#include "platform/desktop/MainLoop.h"
#include "platform/process/SystemLog.h"
#include "twain/manager/DataSourceManagerClients.h"
#include "twain/manager/DataSourceManagerLibrary.h"
#include "twain/manager/TwainRecords.h"

#include <cstring>
#include <utility>

namespace paperline {
namespace {

namespace abi = twain::abi;

struct Triplet {
    uint32_t group;
    uint16_t type;
    uint16_t message;
};

constexpr Triplet getEntryPoint{twain::DG_CONTROL, twain::DAT_ENTRYPOINT, twain::MSG_GET};
constexpr Triplet registerWithCallback{
    twain::DG_CONTROL, twain::DAT_CALLBACK, twain::MSG_REGISTER_CALLBACK};

// Except for the clients, everything here runs on the main thread.
DsmEntry replacedEntry;
DsmCallObserver callObserver;
std::optional<SourceFailure> sourceFailure;
std::optional<abi::Status> conditionAsked; // of the call just made

DsmClients& clients() {
    // Never deleted: threads of sources may call while the process exits.
    static DsmClients& table = *new DsmClients;
    return table;
}

struct Call {
    DsmLibrary& manager;
    DsmClientPointer client; // null while the manager is not open
    abi::Identity* origin;
    abi::Identity* destination;
    Triplet triplet;

    uint16_t operator()(void* data) const {
        return manager.entry(
            origin, destination, triplet.group, triplet.type, triplet.message, data);
    }
};

template <class Function> uint16_t observed(const Triplet& triplet, const Function& function) {
    if (callObserver.willCall)
        callObserver.willCall(triplet.group, triplet.type, triplet.message);
    const uint16_t code = function();
    if (callObserver.didCall)
        callObserver.didCall(code);
    return code;
}

uint16_t deliver(const DsmDelivery& delivery, const Triplet& triplet) {
    TW_IDENTITY source = delivery.source;
    TW_IDENTITY application = delivery.application;
    return delivery.callback.procedure(&source,
                                       &application,
                                       triplet.group,
                                       triplet.type,
                                       triplet.message,
                                       reinterpret_cast<TW_MEMREF>(delivery.callback.refCon));
}

// The callback that the manager gets instead of those of the application.
uint16_t receiveMessage(abi::Identity* source,
                        abi::Identity* application,
                        uint32_t dataGroup,
                        uint16_t dataArgumentType,
                        uint16_t message,
                        void*) {
    const Triplet triplet{dataGroup, dataArgumentType, message};
    DsmDelivery delivery = clients().delivery(source, application);
    if (!delivery.client || delivery.callback.procedure == nullptr)
        return twain::TWRC_FAILURE;
    if (isMainThread())
        return deliver(delivery, triplet);
    postToMainThread([delivery = std::move(delivery), triplet] {
        if (clients().isOpen(delivery.client))
            static_cast<void>(deliver(delivery, triplet));
    });
    return twain::TWRC_SUCCESS;
}

// Gets the memory functions, if the manager has them.
void askForEntryPoint(const Call& call) {
    if ((call.origin->SupportedGroups & twain::DF_DSM2) == 0)
        return;
    abi::EntryPoint answer{};
    answer.Size = sizeof(answer);
    const Call ask{call.manager, call.client, call.origin, nullptr, getEntryPoint};
    if (observed(ask.triplet, [&] { return ask(&answer); }) == twain::TWRC_SUCCESS)
        call.manager.entryPoint = answer;
}

uint16_t openManager(Call call, const TW_IDENTITY& record, void* data) {
    const bool again = call.client && DsmClients::isSame(*call.client, record);
    if (!again) {
        call.client = std::make_shared<DsmClient>();
        call.client->address = &record;
        call.client->record = record;
        call.client->standard = toStandard(record);
        call.client->standard.Id = 0; // the manager sets it
        call.client->standard.SupportedGroups |= twain::DF_APP2;
        call.origin = &call.client->standard;
    }
    const uint16_t code = observed(call.triplet, [&] { return call(data); });
    if (!again && code == twain::TWRC_SUCCESS) {
        clients().add(call.client);
        askForEntryPoint(call);
    }
    return code;
}

uint16_t closeManager(const Call& call, void* data) {
    const uint16_t code = observed(call.triplet, [&] { return call(data); });
    if (code == twain::TWRC_SUCCESS && call.client)
        clients().remove(call.client);
    return code;
}

uint16_t registerWithManager(const Call& call) {
    abi::Callback record{};
    record.CallBackProc = reinterpret_cast<void*>(&receiveMessage);
    return observed(call.triplet, [&] { return call(&record); });
}

uint16_t registerCallback(const Call& call, const TW_CALLBACK& callback) {
    if (!call.client)
        return registerWithManager(call); // the manager refuses and knows why
    const DsmCallback former = clients().callbackOf(*call.client, call.destination);
    clients().setCallback(
        *call.client,
        call.destination,
        {reinterpret_cast<TwainCallback>(callback.CallBackProc), callback.RefCon});
    const uint16_t code = registerWithManager(call);
    if (call.destination == nullptr) {
        call.client->callbackRefused = code != twain::TWRC_SUCCESS;
        return twain::TWRC_SUCCESS;
    }
    if (code != twain::TWRC_SUCCESS)
        clients().setCallback(*call.client, call.destination, former);
    return code;
}

// Some managers register a callback only with a destination, which exists now.
void registerRefusedCallback(const Call& call, const TW_IDENTITY& source) {
    if (!call.client->callbackRefused)
        return;
    const Call again{call.manager,
                     call.client,
                     call.origin,
                     clients().standardOf(*call.client, source),
                     registerWithCallback};
    if (registerWithManager(again) != twain::TWRC_SUCCESS)
        systemLog("The data source manager takes no callback: the scanner cannot report pages.");
}

uint16_t identityCall(const Call& call, TW_IDENTITY& record) {
    const abi::Identity* known = call.client ? clients().standardOf(*call.client, record) : nullptr;
    abi::Identity standard = known != nullptr ? *known : toStandard(record);
    const uint16_t code = observed(call.triplet, [&] { return call(&standard); });
    const uint16_t message = call.triplet.message;
    const bool good = code == twain::TWRC_SUCCESS || code == twain::TWRC_CHECKSTATUS;
    if (!good || message == twain::MSG_CLOSEDS || message == twain::MSG_SET)
        return code;
    record = call.client ? clients().remember(*call.client, standard) : fromStandard(standard);
    if (message == twain::MSG_OPENDS && call.client)
        registerRefusedCallback(call, record);
    return code;
}

template <class Record> uint16_t recordCall(const Call& call, void* data) {
    Record& record = *static_cast<Record*>(data);
    auto standard = toStandard(record);
    const uint16_t code = observed(call.triplet, [&] { return call(&standard); });
    if (code != twain::TWRC_FAILURE)
        record = fromStandard(standard);
    return code;
}

// Reading a condition clears it, so the application gets the one that noteSourceFailure read.
uint16_t statusCall(const Call& call, TW_STATUS& record) {
    if (!conditionAsked)
        return recordCall<TW_STATUS>(call, &record);
    record = fromStandard(*std::exchange(conditionAsked, std::nullopt));
    return twain::TWRC_SUCCESS;
}

uint16_t extendedInfoCall(const Call& call, TW_EXTIMAGEINFO& record) {
    std::optional<std::vector<uint8_t>> standard = toStandard(record);
    if (!standard)
        return twain::TWRC_FAILURE;
    const uint16_t code = observed(call.triplet, [&] { return call(standard->data()); });
    if (code != twain::TWRC_FAILURE)
        fromStandard(*standard, record);
    return code;
}

uint16_t callWithoutData(const Call& call) {
    abi::UserInterface none{};
    const bool userInterface =
        call.triplet.group == twain::DG_CONTROL && call.triplet.type == twain::DAT_USERINTERFACE;
    return observed(call.triplet, [&] { return call(userInterface ? &none : nullptr); });
}

uint16_t imageCall(const Call& call, void* data) {
    switch (call.triplet.type) {
    case twain::DAT_IMAGEINFO:
        return recordCall<TW_IMAGEINFO>(call, data);
    case twain::DAT_IMAGEMEMXFER:
        return recordCall<TW_IMAGEMEMXFER>(call, data);
    case twain::DAT_EXTIMAGEINFO:
        return extendedInfoCall(call, *static_cast<TW_EXTIMAGEINFO*>(data));
    case twain::DAT_IMAGENATIVEXFER: // a handle in both layouts
        return observed(call.triplet, [&] { return call(data); });
    default:
        return twain::TWRC_FAILURE;
    }
}

uint16_t controlCall(const Call& call, void* data) {
    switch (call.triplet.type) {
    case twain::DAT_IDENTITY:
        return identityCall(call, *static_cast<TW_IDENTITY*>(data));
    case twain::DAT_CALLBACK:
        return registerCallback(call, *static_cast<const TW_CALLBACK*>(data));
    case twain::DAT_USERINTERFACE:
        return recordCall<TW_USERINTERFACE>(call, data);
    case twain::DAT_STATUS:
        return statusCall(call, *static_cast<TW_STATUS*>(data));
    case twain::DAT_SETUPMEMXFER:
        return recordCall<TW_SETUPMEMXFER>(call, data);
    case twain::DAT_SETUPFILEXFER:
        return recordCall<TW_SETUPFILEXFER>(call, data);
    case twain::DAT_PENDINGXFERS:
        return recordCall<TW_PENDINGXFERS>(call, data);
    case twain::DAT_PARENT: // a window handle in both layouts
    case twain::DAT_CAPABILITY:
        return observed(call.triplet, [&] { return call(data); });
    default:
        return twain::TWRC_FAILURE;
    }
}

uint16_t convertedCall(const Call& call, const TW_IDENTITY& origin, void* data) {
    const Triplet& triplet = call.triplet;
    if (triplet.group == twain::DG_CONTROL && triplet.type == twain::DAT_PARENT) {
        if (triplet.message == twain::MSG_OPENDSM)
            return openManager(call, origin, data);
        if (triplet.message == twain::MSG_CLOSEDSM)
            return closeManager(call, data);
    }
    if (data == nullptr)
        return callWithoutData(call);
    if (triplet.group == twain::DG_CONTROL)
        return controlCall(call, data);
    return triplet.group == twain::DG_IMAGE ? imageCall(call, data) : twain::TWRC_FAILURE;
}

// Other calls may be refused without the scan failing: capabilities, extended information.
bool isStepOfScan(const Triplet& triplet) {
    if (triplet.group == twain::DG_IMAGE)
        return triplet.type >= twain::DAT_IMAGEINFO && triplet.type <= twain::DAT_IMAGEFILEXFER;
    return triplet.message == twain::MSG_OPENDS || triplet.message == twain::MSG_ENABLEDS ||
           triplet.message == twain::MSG_ENABLEDSUIONLY || triplet.message == twain::MSG_ENDXFER;
}

std::string statusTextOf(const Call& call, const abi::Status& status) {
    abi::StatusUtf8 record{status, 0, nullptr};
    if (call.manager.entryPoint.DSM_MemLock == nullptr || call(&record) != twain::TWRC_SUCCESS ||
        record.UTF8string == nullptr)
        return {};
    const abi::EntryPoint& memory = call.manager.entryPoint;
    const auto* bytes = static_cast<const char*>(memory.DSM_MemLock(record.UTF8string));
    std::string text;
    if (bytes != nullptr)
        text.assign(bytes, strnlen(bytes, record.Size));
    memory.DSM_MemUnlock(record.UTF8string);
    memory.DSM_MemFree(record.UTF8string);
    return text;
}

void noteSourceFailure(Call call, uint16_t code) {
    if (call.triplet.type != twain::DAT_STATUS)
        conditionAsked.reset(); // of an earlier call
    const bool failed = code == twain::TWRC_FAILURE || code == twain::TWRC_CHECKSTATUS;
    if (!failed || !call.client || !isStepOfScan(call.triplet))
        return;
    call.triplet = {twain::DG_CONTROL, twain::DAT_STATUS, twain::MSG_GET};
    abi::Status status{};
    if (observed(call.triplet, [&] { return call(&status); }) != twain::TWRC_SUCCESS)
        return;
    conditionAsked = status;
    if (sourceFailure)
        return;
    sourceFailure = SourceFailure{status.ConditionCode, {}};
    call.triplet.type = twain::DAT_STATUSUTF8;
    if (call.destination != nullptr)
        sourceFailure->text = statusTextOf(call, status);
}

} // namespace

std::optional<SourceFailure> takeSourceFailure() {
    return std::exchange(sourceFailure, std::nullopt);
}

TW_UINT16 DSM_Entry(TW_IDENTITY* origin,
                    TW_IDENTITY* destination,
                    TW_UINT32 dataGroup,
                    TW_UINT16 dataArgumentType,
                    TW_UINT16 message,
                    TW_MEMREF data) {
    const Triplet triplet{dataGroup, dataArgumentType, message};
    if (replacedEntry) {
        const DsmEntry entry = replacedEntry; // the call may replace it
        return observed(triplet, [&] {
            return entry(origin, destination, dataGroup, dataArgumentType, message, data);
        });
    }
    DsmLibrary* manager = loadDsmLibrary(!clients().empty());
    if (manager == nullptr || origin == nullptr)
        return twain::TWRC_FAILURE;

    const DsmClientPointer client = clients().find(*origin);
    // Applications that are not open and unknown sources are passed on, too: the manager answers.
    abi::Identity unopened = toStandard(*origin);
    unopened.Id = 0;
    abi::Identity unknownSource{};
    abi::Identity* standardDestination = nullptr;
    if (destination != nullptr) {
        standardDestination = client ? clients().standardOf(*client, *destination) : nullptr;
        if (standardDestination == nullptr) {
            unknownSource = toStandard(*destination);
            standardDestination = &unknownSource;
        }
    }
    const Call call{
        *manager, client, client ? &client->standard : &unopened, standardDestination, triplet};
    const uint16_t code = convertedCall(call, *origin, data);
    noteSourceFailure(call, code);
    return code;
}

void setDsmEntry(DsmEntry entry) {
    replacedEntry = std::move(entry);
}

void setDsmCallObserver(DsmCallObserver observer) {
    callObserver = std::move(observer);
}

} // namespace paperline

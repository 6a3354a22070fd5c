#include "dsm/Manager.h"

#include "dsm/SourceFiles.h"

#include <cstring>
#include <utility>

namespace paperline::dsm {
namespace {

bool sameNames(const Identity& one, const Identity& other) {
    return std::strncmp(one.ProductName, other.ProductName, sizeof(one.ProductName)) == 0 &&
           std::strncmp(one.Manufacturer, other.Manufacturer, sizeof(one.Manufacturer)) == 0 &&
           std::strncmp(one.ProductFamily, other.ProductFamily, sizeof(one.ProductFamily)) == 0;
}

} // namespace

uint32_t Manager::openApplication(const Identity* identity) const {
    return identity != nullptr && applications_.contains(idOf(*identity)) ? identity->Id : 0;
}

const Source* Manager::findSource(const Identity& wanted) const {
    // An Id is good for as long as the manager is open; a name that a program remembered is good
    // for ever. So an Id counts only together with its name.
    const bool named = wanted.ProductName[0] != '\0';
    const Source* found = nullptr;
    for (const Source& source : sources_) {
        const bool sameId = source.identity.Id == wanted.Id;
        const bool same = named ? sameNames(source.identity, wanted) : sameId;
        if (same && (sameId || found == nullptr))
            found = &source;
    }
    if (found != nullptr || !named)
        return found;
    for (const Source& source : sources_)
        if (std::strncmp(
                source.identity.ProductName, wanted.ProductName, sizeof(wanted.ProductName)) == 0)
            return &source;
    return nullptr;
}

Manager::ConnectionPointer Manager::connection(uint32_t applicationId,
                                               const Identity& source) const {
    const auto application = applications_.find(applicationId);
    if (application == applications_.end())
        return nullptr;
    const auto& connections = application->second.connections;
    if (const auto found = connections.find(idOf(source)); found != connections.end())
        return found->second;
    for (const auto& [id, open] : connections)
        if (source.ProductName[0] != '\0' && sameNames(open->source, source))
            return open;
    return nullptr;
}

uint16_t Manager::settle(uint32_t applicationId, Outcome outcome) {
    const std::lock_guard lock(mutex_);
    const auto application = applications_.find(applicationId);
    if (application != applications_.end())
        application->second.conditionCode = outcome.conditionCode;
    else
        strangersConditionCode_ = outcome.conditionCode;
    return outcome.returnCode;
}

uint16_t
Manager::entry(Identity* origin, const Identity* destination, const Triplet& triplet, void* data) {
    const bool control = triplet.group == twain::DG_CONTROL;
    if (control && triplet.type == twain::DAT_NULL)
        return sourceMessage(origin, destination, triplet);
    if (origin == nullptr)
        return settle(0, failure(twain::TWCC_BADVALUE));
    if (control && triplet.type == twain::DAT_PARENT && triplet.message == twain::MSG_OPENDSM) {
        const Outcome outcome = openManager(*origin);
        return settle(origin->Id, outcome);
    }

    uint32_t application = 0;
    bool toOpenSource = false;
    {
        const std::lock_guard lock(mutex_);
        application = openApplication(origin);
        toOpenSource = destination != nullptr && connection(application, *destination) != nullptr;
    }
    if (control && triplet.type == twain::DAT_STATUS && !toOpenSource)
        return triplet.message == twain::MSG_GET && data != nullptr
                   ? giveStatus(application, static_cast<twain::abi::Status*>(data))
                   : settle(application, failure(twain::TWCC_BADPROTOCOL));
    if (application == 0)
        return settle(0, failure(twain::TWCC_SEQERROR));
    if (handles(triplet))
        return settle(application, managerCall(application, destination, triplet, data));
    return forward(application, destination, triplet, data);
}

bool Manager::handles(const Triplet& triplet) const {
    if (triplet.group != twain::DG_CONTROL)
        return false;
    switch (triplet.type) {
    case twain::DAT_PARENT:
    case twain::DAT_CALLBACK:
    case twain::DAT_CALLBACK2:
    case twain::DAT_ENTRYPOINT:
        return true;
    case twain::DAT_IDENTITY:
        return triplet.message != twain::MSG_GET; // a source tells its identity itself
    default:
        return false;
    }
}

Manager::Outcome Manager::managerCall(uint32_t applicationId,
                                      const Identity* destination,
                                      const Triplet& triplet,
                                      void* data) {
    switch (triplet.type) {
    case twain::DAT_PARENT:
        return triplet.message == twain::MSG_CLOSEDSM ? closeManager(applicationId)
                                                      : failure(twain::TWCC_BADPROTOCOL);
    case twain::DAT_IDENTITY:
        return identityCall(applicationId, triplet.message, static_cast<Identity*>(data));
    case twain::DAT_ENTRYPOINT:
        return triplet.message == twain::MSG_GET
                   ? giveEntryPoint(static_cast<twain::abi::EntryPoint*>(data))
                   : failure(twain::TWCC_BADPROTOCOL);
    default:
        break;
    }
    if (triplet.message != twain::MSG_REGISTER_CALLBACK)
        return failure(twain::TWCC_BADPROTOCOL);
    if (data == nullptr)
        return failure(twain::TWCC_BADVALUE);
    Registration callback;
    if (triplet.type == twain::DAT_CALLBACK) {
        const auto* record = static_cast<const twain::abi::Callback*>(data);
        callback.procedure = reinterpret_cast<twain::abi::EntryFunction>(record->CallBackProc);
        callback.refCon = record->RefCon;
    } else {
        const auto* record = static_cast<const twain::abi::Callback2*>(data);
        callback.procedure = reinterpret_cast<twain::abi::EntryFunction>(record->CallBackProc);
        callback.refCon = record->RefCon;
    }
    return registerCallback(applicationId, destination, callback);
}

uint16_t Manager::forward(uint32_t applicationId,
                          const Identity* destination,
                          const Triplet& triplet,
                          void* data) {
    if (destination == nullptr)
        return settle(applicationId, failure(twain::TWCC_BADDEST));
    ConnectionPointer open;
    bool known = false;
    {
        const std::lock_guard lock(mutex_);
        open = connection(applicationId, *destination);
        known = findSource(*destination) != nullptr;
    }
    if (!open)
        return settle(applicationId, failure(known ? twain::TWCC_SEQERROR : twain::TWCC_BADDEST));
    if (triplet.group == twain::DG_CONTROL && triplet.type == twain::DAT_EVENT && data != nullptr &&
        giveWaitingMessage(*open, static_cast<twain::abi::Event*>(data)))
        return twain::TWRC_DSEVENT;
    return open->library->call(&open->givenApplication, triplet, data);
}

Manager::Outcome Manager::openManager(Identity& origin) {
    Identity application = origin;
    endStrings(application);
    bool first = false;
    {
        const std::lock_guard lock(mutex_);
        if (const auto open = applications_.find(idOf(origin));
            open != applications_.end() && sameNames(open->second.identity, application))
            return failure(twain::TWCC_SEQERROR);
        first = applications_.empty();
        application.Id = nextId_++;
    }
    application.SupportedGroups |= twain::DF_DSM2;
    std::vector<Source> found;
    if (first)
        found = loadSources(findSourceFiles(searchPlaces()), application);
    {
        const std::lock_guard lock(mutex_);
        if (first && applications_.empty()) {
            for (Source& source : found)
                source.identity.Id = nextId_++;
            sources_.swap(found); // the former ones are unloaded when the lock is gone
        }
        applications_[idOf(application)].identity = application;
    }
    origin.Id = application.Id;
    origin.SupportedGroups = application.SupportedGroups;
    return success();
}

Manager::Outcome Manager::closeManager(uint32_t applicationId) {
    const std::lock_guard lock(mutex_);
    const auto application = applications_.find(applicationId);
    if (application == applications_.end() || !application->second.connections.empty())
        return failure(twain::TWCC_SEQERROR);
    applications_.erase(application);
    return success();
}

uint16_t Manager::giveStatus(uint32_t applicationId, twain::abi::Status* status) {
    const std::lock_guard lock(mutex_);
    const auto application = applications_.find(applicationId);
    uint16_t& conditionCode = application != applications_.end() ? application->second.conditionCode
                                                                 : strangersConditionCode_;
    status->ConditionCode = std::exchange(conditionCode, twain::TWCC_SUCCESS);
    status->Data = 0;
    return twain::TWRC_SUCCESS;
}

Manager::Outcome Manager::giveEntryPoint(twain::abi::EntryPoint* entryPoint) {
    if (entryPoint == nullptr || entryPoint->Size < sizeof(twain::abi::EntryPoint))
        return failure(twain::TWCC_BADVALUE);
    fillEntryPoint(*entryPoint);
    return success();
}

Manager& processManager() {
    static Manager& manager = *new Manager;
    return manager;
}

} // namespace paperline::dsm

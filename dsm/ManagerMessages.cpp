// Callbacks, and the messages that sources send through them.
#include "dsm/Manager.h"

#include <cstring>

namespace paperline::dsm {
namespace {

constexpr size_t mostWaitingMessages = 32;

bool sameProduct(const Identity& one, const Identity& other) {
    return std::strncmp(one.ProductName, other.ProductName, sizeof(one.ProductName)) == 0 &&
           std::strncmp(one.Manufacturer, other.Manufacturer, sizeof(one.Manufacturer)) == 0;
}

} // namespace

Manager::Outcome
Manager::registerCallback(uint32_t applicationId, const Identity* source, Registration callback) {
    const std::lock_guard lock(mutex_);
    const auto application = applications_.find(applicationId);
    if (application == applications_.end())
        return failure(twain::TWCC_SEQERROR);
    if (source == nullptr) {
        application->second.callback = callback;
        return success();
    }
    const ConnectionPointer open = connection(applicationId, *source);
    if (!open)
        return failure(findSource(*source) != nullptr ? twain::TWCC_SEQERROR : twain::TWCC_BADDEST);
    open->callback = callback;
    return success();
}

Manager::ConnectionPointer Manager::sendingConnection(const Identity* source,
                                                      const Identity* application,
                                                      uint32_t& applicationId) const {
    // A source may have forgotten the Id it was given, and may leave the application out when only
    // one has opened it.
    ConnectionPointer byName;
    uint32_t applicationByName = 0;
    for (const auto& [id, candidate] : applications_) {
        if (application != nullptr && application->Id != 0 && application->Id != id)
            continue;
        for (const auto& [sourceId, open] : candidate.connections) {
            if (sourceId == source->Id) {
                applicationId = id;
                return open;
            }
            if (!byName && sameProduct(open->source, *source)) {
                byName = open;
                applicationByName = id;
            }
        }
    }
    applicationId = applicationByName;
    return byName;
}

uint16_t Manager::sourceMessage(const Identity* source,
                                const Identity* application,
                                const Triplet& triplet) {
    if (source == nullptr)
        return settle(0, failure(twain::TWCC_BADVALUE));
    Registration callback;
    Identity from{};
    Identity to{};
    {
        const std::lock_guard lock(mutex_);
        uint32_t applicationId = 0;
        const ConnectionPointer open = sendingConnection(source, application, applicationId);
        if (!open) {
            strangersConditionCode_ = twain::TWCC_BADDEST;
            return twain::TWRC_FAILURE;
        }
        const Application& receiver = applications_.at(applicationId);
        callback = open->callback.procedure != nullptr ? open->callback : receiver.callback;
        if (callback.procedure == nullptr) {
            if (open->waitingMessages.size() == mostWaitingMessages)
                return twain::TWRC_FAILURE;
            open->waitingMessages.push_back(triplet.message);
            return twain::TWRC_SUCCESS;
        }
        from = open->source;
        to = receiver.identity;
    }
    return callback.procedure(&from,
                              &to,
                              triplet.group,
                              triplet.type,
                              triplet.message,
                              reinterpret_cast<void*>(callback.refCon));
}

bool Manager::giveWaitingMessage(Connection& connection, twain::abi::Event* event) {
    const std::lock_guard lock(mutex_);
    event->TWMessage = twain::MSG_NULL;
    if (connection.waitingMessages.empty())
        return false;
    event->TWMessage = connection.waitingMessages.front();
    connection.waitingMessages.pop_front();
    return true;
}

} // namespace paperline::dsm

#include "twain/manager/DataSourceManagerClients.h"

#include "twain/manager/TwainRecords.h"

#include <algorithm>

namespace paperline {
namespace {

constexpr size_t mostKnownSources = 1024;

// By value: references to members of a packed record may be misaligned.
uint32_t idOf(const twain::abi::Identity& identity) {
    return identity.Id;
}

bool sameSource(const TW_IDENTITY& one, const TW_IDENTITY& other) {
    return one.Id == other.Id && one.ProductName == other.ProductName &&
           one.Manufacturer == other.Manufacturer && one.ProductFamily == other.ProductFamily;
}

bool sameApplication(const TW_IDENTITY& one, const TW_IDENTITY& other) {
    return sameSource(one, other) && one.Version.Info == other.Version.Info;
}

} // namespace

DsmClientPointer DsmClients::find(const TW_IDENTITY& record) const {
    const std::lock_guard lock(mutex_);
    for (const DsmClientPointer& client : clients_)
        if (client->address == &record)
            return client;
    for (const DsmClientPointer& client : clients_)
        if (sameApplication(client->record, record))
            return client;
    return nullptr;
}

bool DsmClients::isSame(const DsmClient& client, const TW_IDENTITY& record) {
    return client.address == &record && sameApplication(client.record, record);
}

void DsmClients::add(const DsmClientPointer& client) {
    const std::lock_guard lock(mutex_);
    clients_.remove_if(
        [&](const DsmClientPointer& former) { return former->address == client->address; });
    clients_.push_back(client);
}

void DsmClients::remove(const DsmClientPointer& client) {
    const std::lock_guard lock(mutex_);
    clients_.remove(client);
}

bool DsmClients::isOpen(const DsmClientPointer& client) const {
    const std::lock_guard lock(mutex_);
    return std::find(clients_.begin(), clients_.end(), client) != clients_.end();
}

bool DsmClients::empty() const {
    const std::lock_guard lock(mutex_);
    return clients_.empty();
}

twain::abi::Identity* DsmClients::standardOf(DsmClient& client, const TW_IDENTITY& source) const {
    const std::lock_guard lock(mutex_);
    for (DsmClient::KnownSource& known : client.sources)
        if (sameSource(known.record, source))
            return &known.standard;
    return nullptr;
}

TW_IDENTITY DsmClients::remember(DsmClient& client, const twain::abi::Identity& source) {
    const TW_IDENTITY record = fromStandard(source);
    const std::lock_guard lock(mutex_);
    for (DsmClient::KnownSource& known : client.sources) {
        if (known.standard.Id == source.Id) {
            known = {record, source};
            return record;
        }
    }
    if (client.sources.size() < mostKnownSources)
        client.sources.push_back({record, source});
    return record;
}

void DsmClients::setCallback(DsmClient& client,
                             const twain::abi::Identity* source,
                             DsmCallback callback) {
    const std::lock_guard lock(mutex_);
    if (source == nullptr)
        client.callback = callback;
    else
        client.sourceCallbacks[idOf(*source)] = callback;
}

DsmCallback DsmClients::callbackOf(DsmClient& client, const twain::abi::Identity* source) const {
    const std::lock_guard lock(mutex_);
    if (source != nullptr)
        if (const auto own = client.sourceCallbacks.find(idOf(*source));
            own != client.sourceCallbacks.end() && own->second.procedure != nullptr)
            return own->second;
    return client.callback;
}

DsmDelivery DsmClients::delivery(const twain::abi::Identity* source,
                                 const twain::abi::Identity* application) const {
    DsmDelivery delivery;
    {
        const std::lock_guard lock(mutex_);
        for (const DsmClientPointer& client : clients_)
            if (application != nullptr && client->standard.Id == application->Id)
                delivery.client = client;
        // Some managers pass another record than the application's.
        if (!delivery.client && clients_.size() == 1)
            delivery.client = clients_.front();
        if (!delivery.client)
            return delivery;
        delivery.application = delivery.client->record;
        if (source != nullptr)
            delivery.source = fromStandard(*source);
    }
    delivery.callback = callbackOf(*delivery.client, source);
    return delivery;
}

} // namespace paperline

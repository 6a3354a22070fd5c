// The applications that have the manager open, as the manager knows them, and their callbacks.
// Messages arrive on any thread, so the table is guarded by a mutex; it is not held while the
// manager or the application runs.
#pragma once

#include "twain/manager/DataSourceManager.h"
#include "twain/records/StandardRecords.h"
#include "twain/records/TwainTypes.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>

namespace paperline {

struct DsmCallback {
    TwainCallback procedure = nullptr;
    uint64_t refCon = 0;
};

// One application. Its records are handed to the manager by address and stay where they are, for
// managers and sources that keep the address.
struct DsmClient {
    struct KnownSource {
        TW_IDENTITY record;
        twain::abi::Identity standard;
    };
    const TW_IDENTITY* address = nullptr; // where the application keeps its record
    TW_IDENTITY record{};                 // as the application set it
    twain::abi::Identity standard{};      // as the manager filled it
    std::list<KnownSource> sources;       // that the manager has told
    DsmCallback callback;                 // registered without a destination
    bool callbackRefused = false; // the manager wants a destination: registered at MSG_OPENDS
    std::map<uint32_t, DsmCallback> sourceCallbacks; // by the source's Id
};
using DsmClientPointer = std::shared_ptr<DsmClient>;

// What one message from a source needs on its way to the application.
struct DsmDelivery {
    DsmClientPointer client;
    DsmCallback callback;
    TW_IDENTITY source{};
    TW_IDENTITY application{};
};

class DsmClients {
public:
    // The client that the application's record belongs to: by its address, else by its content.
    DsmClientPointer find(const TW_IDENTITY& record) const;
    // Whether the record is the very one that the client was opened with. Another with the same
    // content is another application of the same name.
    static bool isSame(const DsmClient& client, const TW_IDENTITY& record);
    void add(const DsmClientPointer& client); // in place of one that left its address without word
    void remove(const DsmClientPointer& client);
    bool isOpen(const DsmClientPointer& client) const;
    bool empty() const;

    // The record that the manager gave out for this source, or null. It lives with the client.
    twain::abi::Identity* standardOf(DsmClient& client, const TW_IDENTITY& source) const;
    // Keeps a record that the manager filled; returns what the application gets to see of it.
    TW_IDENTITY remember(DsmClient& client, const twain::abi::Identity& source);

    void setCallback(DsmClient& client, const twain::abi::Identity* source, DsmCallback callback);
    DsmCallback callbackOf(DsmClient& client, const twain::abi::Identity* source) const;

    // Empty client: nobody waits for the message.
    DsmDelivery delivery(const twain::abi::Identity* source,
                         const twain::abi::Identity* application) const;

private:
    mutable std::mutex mutex_;
    std::list<DsmClientPointer> clients_;
};

} // namespace paperline

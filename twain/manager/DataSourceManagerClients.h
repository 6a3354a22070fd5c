// The applications that have opened the manager, and their callbacks. Messages of sources arrive on
// any thread, so a mutex guards the table. It is not held during calls to others.
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

// One application. Its records never move: managers and sources may keep their addresses.
struct DsmClient {
    struct KnownSource {
        TW_IDENTITY record;
        twain::abi::Identity standard;
    };
    const TW_IDENTITY* address = nullptr; // of the application's record
    TW_IDENTITY record{};                 // as the application set it
    twain::abi::Identity standard{};      // as the manager filled it
    std::list<KnownSource> sources;       // that the manager has named
    DsmCallback callback;                 // registered without a destination
    bool callbackRefused = false; // for lack of a destination; registered again at MSG_OPENDS
    std::map<uint32_t, DsmCallback> sourceCallbacks; // by the source's Id
};
using DsmClientPointer = std::shared_ptr<DsmClient>;

// Where to deliver a message of a source.
struct DsmDelivery {
    DsmClientPointer client;
    DsmCallback callback;
    TW_IDENTITY source{};
    TW_IDENTITY application{};
};

class DsmClients {
public:
    // The client of an application's record, by its address or else by its content.
    DsmClientPointer find(const TW_IDENTITY& record) const;
    // Whether the client was opened with this record. One at another address is another application
    // of the same name.
    static bool isSame(const DsmClient& client, const TW_IDENTITY& record);
    void add(const DsmClientPointer& client); // replaces one of the same address that never closed
    void remove(const DsmClientPointer& client);
    bool isOpen(const DsmClientPointer& client) const;
    bool empty() const;

    // The manager's record of this source, or null. It exists as long as the client.
    twain::abi::Identity* standardOf(DsmClient& client, const TW_IDENTITY& source) const;
    // Keeps a record that the manager filled in, and returns it in the application's layout.
    TW_IDENTITY remember(DsmClient& client, const twain::abi::Identity& source);

    void setCallback(DsmClient& client, const twain::abi::Identity* source, DsmCallback callback);
    DsmCallback callbackOf(DsmClient& client, const twain::abi::Identity* source) const;

    // The client is null if no application expects the message.
    DsmDelivery delivery(const twain::abi::Identity* source,
                         const twain::abi::Identity* application) const;

private:
    mutable std::mutex mutex_;
    std::list<DsmClientPointer> clients_;
};

} // namespace paperline

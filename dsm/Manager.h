// The data source manager: applications on one side, data sources on the other.
//
// Applications and sources may call from any thread, and a source may call back from inside a call
// that an application made. So the mutex guards the tables only: it is never held while a source's
// or an application's code runs, and what such a call needs is kept alive by shared pointers.
#pragma once

#include "dsm/SourceLibrary.h"
#include "twain/records/StandardRecords.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace paperline::dsm {

class Manager {
public:
    Manager() = default;
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    // DSM_Entry: a call of an application (to the manager or, with a destination, to a source), or
    // a message from a source to an application (DAT_NULL).
    uint16_t
    entry(Identity* origin, const Identity* destination, const Triplet& triplet, void* data);

private:
    struct Registration {
        twain::abi::EntryFunction procedure = nullptr;
        uintptr_t refCon = 0;
    };

    // One application's open source.
    struct Connection {
        std::shared_ptr<SourceLibrary> library;
        Identity source{};
        // The records that the source was given. It may keep their addresses and write to them.
        Identity givenApplication{};
        Identity givenSource{};
        Registration callback;
        std::deque<uint16_t> waitingMessages; // sent while no callback was registered
    };
    using ConnectionPointer = std::shared_ptr<Connection>;

    struct Application {
        Identity identity{};
        uint16_t conditionCode = twain::TWCC_SUCCESS;
        size_t nextSource = 0; // of MSG_GETNEXT
        Registration callback; // for every source that has none of its own
        std::map<uint32_t, ConnectionPointer> connections; // by the source's Id
    };

    // What a call to the manager itself ends with.
    struct Outcome {
        uint16_t returnCode;
        uint16_t conditionCode;
    };
    static Outcome success() { return {twain::TWRC_SUCCESS, twain::TWCC_SUCCESS}; }
    static Outcome failure(uint16_t conditionCode) { return {twain::TWRC_FAILURE, conditionCode}; }

    // Manager.cpp: which of the following a call is for.
    uint16_t settle(uint32_t applicationId, Outcome outcome);
    bool handles(const Triplet& triplet) const;
    Outcome managerCall(uint32_t applicationId,
                        const Identity* destination,
                        const Triplet& triplet,
                        void* data);
    uint16_t forward(uint32_t applicationId,
                     const Identity* destination,
                     const Triplet& triplet,
                     void* data);
    Outcome openManager(Identity& origin);
    Outcome closeManager(uint32_t applicationId);
    uint16_t giveStatus(uint32_t applicationId, twain::abi::Status* status);
    static Outcome giveEntryPoint(twain::abi::EntryPoint* entryPoint);

    // Manager.cpp; the mutex is held by the caller.
    uint32_t openApplication(const Identity* identity) const;
    ConnectionPointer connection(uint32_t applicationId, const Identity& source) const;
    const Source* findSource(const Identity& wanted) const;

    // Identities.cpp: the list of sources, opening and closing one.
    Outcome identityCall(uint32_t applicationId, uint16_t message, Identity* identity);
    Outcome giveFirstOrNext(uint32_t applicationId, uint16_t message, Identity& identity);
    Outcome giveDefault(Identity& identity);
    Outcome setDefault(const Identity& identity);
    Outcome openSource(uint32_t applicationId, Identity& identity);
    Outcome closeSource(uint32_t applicationId, const Identity& identity);
    Outcome connect(uint32_t applicationId, const Identity& wanted, const ConnectionPointer& open);
    void disconnect(uint32_t applicationId, const Connection& closed);
    static void tellEntryPoint(Connection& connection);
    const Source* defaultSource() const; // the mutex is held by the caller
    static uint16_t conditionOf(Connection& connection);

    // Messages.cpp: callbacks and what sources send.
    Outcome registerCallback(uint32_t applicationId, const Identity* source, Registration callback);
    uint16_t
    sourceMessage(const Identity* source, const Identity* application, const Triplet& triplet);
    ConnectionPointer sendingConnection(const Identity* source,
                                        const Identity* application,
                                        uint32_t& applicationId) const;
    bool giveWaitingMessage(Connection& connection, twain::abi::Event* event);

    mutable std::mutex mutex_;
    std::map<uint32_t, Application> applications_; // by Id
    std::vector<Source> sources_;
    std::string defaultLines_; // nameLines() of the default source
    uint32_t nextId_ = 1;      // applications and sources share one row of numbers
    uint16_t strangersConditionCode_ = twain::TWCC_SUCCESS; // of callers that are not open
};

// The process's manager. It is never destroyed: sources' threads may call while the process ends.
Manager& processManager();

// The record that applications ask for and that sources are given.
void fillEntryPoint(twain::abi::EntryPoint& entryPoint);

} // namespace paperline::dsm

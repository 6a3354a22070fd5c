// The list of sources, opening and closing one.
#include "dsm/DefaultSource.h"
#include "dsm/Log.h"
#include "dsm/Manager.h"

namespace paperline::dsm {

Manager::Outcome
Manager::identityCall(uint32_t applicationId, uint16_t message, Identity* identity) {
    if (identity == nullptr)
        return failure(twain::TWCC_BADVALUE);
    switch (message) {
    case twain::MSG_GETFIRST:
    case twain::MSG_GETNEXT:
        return giveFirstOrNext(applicationId, message, *identity);
    case twain::MSG_GETDEFAULT:
        return giveDefault(*identity);
    case twain::MSG_SET:
        return setDefault(*identity);
    case twain::MSG_OPENDS:
        return openSource(applicationId, *identity);
    case twain::MSG_CLOSEDS:
        return closeSource(applicationId, *identity);
    default: // MSG_USERSELECT among them: on this system the application asks its user itself
        return failure(twain::TWCC_BADPROTOCOL);
    }
}

Manager::Outcome
Manager::giveFirstOrNext(uint32_t applicationId, uint16_t message, Identity& identity) {
    const std::lock_guard lock(mutex_);
    const auto application = applications_.find(applicationId);
    if (application == applications_.end())
        return failure(twain::TWCC_SEQERROR);
    size_t& next = application->second.nextSource;
    if (message == twain::MSG_GETFIRST)
        next = 0;
    if (sources_.empty())
        return failure(twain::TWCC_NODS);
    if (next >= sources_.size())
        return {twain::TWRC_ENDOFLIST, twain::TWCC_SUCCESS};
    identity = sources_[next++].identity;
    return success();
}

const Source* Manager::defaultSource() const {
    for (const Source& source : sources_)
        if (nameLines(source.identity) == defaultLines_)
            return &source;
    return sources_.empty() ? nullptr : &sources_.front();
}

Manager::Outcome Manager::giveDefault(Identity& identity) {
    const std::string remembered = readDefaultSource();
    const std::lock_guard lock(mutex_);
    if (!remembered.empty())
        defaultLines_ = remembered;
    const Source* source = defaultSource();
    if (source == nullptr)
        return failure(twain::TWCC_NODS);
    identity = source->identity;
    return success();
}

Manager::Outcome Manager::setDefault(const Identity& identity) {
    std::string lines;
    {
        const std::lock_guard lock(mutex_);
        const Source* source = findSource(identity);
        if (source == nullptr)
            return failure(sources_.empty() ? twain::TWCC_NODS : twain::TWCC_BADVALUE);
        lines = nameLines(source->identity);
        defaultLines_ = lines;
    }
    if (!writeDefaultSource(lines))
        logLine("the default source is kept for this program run only");
    return success();
}

uint16_t Manager::conditionOf(Connection& connection) {
    twain::abi::Status status{};
    const uint16_t code =
        connection.library->call(&connection.givenApplication,
                                 {twain::DG_CONTROL, twain::DAT_STATUS, twain::MSG_GET},
                                 &status);
    return code == twain::TWRC_SUCCESS && status.ConditionCode != twain::TWCC_SUCCESS
               ? status.ConditionCode
               : twain::TWCC_OPERATIONERROR;
}

Manager::Outcome
Manager::connect(uint32_t applicationId, const Identity& wanted, const ConnectionPointer& open) {
    const std::lock_guard lock(mutex_);
    const auto application = applications_.find(applicationId);
    const Source* source = findSource(wanted);
    if (source == nullptr)
        return failure(twain::TWCC_NODS);
    const uint32_t id = source->identity.Id;
    if (application == applications_.end() || application->second.connections.contains(id))
        return failure(twain::TWCC_SEQERROR);
    open->library = source->library;
    open->source = source->identity;
    open->givenApplication = application->second.identity;
    open->givenSource = source->identity;
    application->second.connections.emplace(id, open);
    return success();
}

void Manager::disconnect(uint32_t applicationId, const Connection& closed) {
    const std::lock_guard lock(mutex_);
    const auto application = applications_.find(applicationId);
    if (application != applications_.end())
        application->second.connections.erase(idOf(closed.source));
}

void Manager::tellEntryPoint(Connection& connection) {
    if ((connection.source.SupportedGroups & twain::DF_DS2) == 0)
        return;
    twain::abi::EntryPoint entryPoint{};
    fillEntryPoint(entryPoint);
    // A source that does not want it says so; that is no reason not to open it.
    static_cast<void>(
        connection.library->call(&connection.givenApplication,
                                 {twain::DG_CONTROL, twain::DAT_ENTRYPOINT, twain::MSG_SET},
                                 &entryPoint));
}

Manager::Outcome Manager::openSource(uint32_t applicationId, Identity& identity) {
    Identity wanted = identity;
    endStrings(wanted);
    if (wanted.Id == 0 && wanted.ProductName[0] == '\0')
        if (const Outcome outcome = giveDefault(wanted); outcome.returnCode != twain::TWRC_SUCCESS)
            return outcome;
    // In the table before the source knows: it may send messages from inside the call.
    const auto open = std::make_shared<Connection>();
    if (const Outcome outcome = connect(applicationId, wanted, open);
        outcome.returnCode != twain::TWRC_SUCCESS)
        return outcome;
    open->library->keepInMemory();
    tellEntryPoint(*open);
    const uint16_t code =
        open->library->call(&open->givenApplication,
                            {twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_OPENDS},
                            &open->givenSource);
    if (code != twain::TWRC_SUCCESS && code != twain::TWRC_CHECKSTATUS) {
        const uint16_t condition = conditionOf(*open);
        disconnect(applicationId, *open);
        return {code, condition};
    }
    identity = open->givenSource; // a source may tell more of itself once it is open
    endStrings(identity);
    identity.Id = open->source.Id;
    return {code, twain::TWCC_SUCCESS};
}

Manager::Outcome Manager::closeSource(uint32_t applicationId, const Identity& identity) {
    ConnectionPointer open;
    bool known = false;
    {
        const std::lock_guard lock(mutex_);
        open = connection(applicationId, identity);
        known = findSource(identity) != nullptr;
    }
    if (!open)
        return failure(known ? twain::TWCC_SEQERROR : twain::TWCC_BADDEST);
    const uint16_t code =
        open->library->call(&open->givenApplication,
                            {twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_CLOSEDS},
                            &open->givenSource);
    if (code != twain::TWRC_SUCCESS)
        return {code, conditionOf(*open)};
    disconnect(applicationId, *open);
    return success();
}

} // namespace paperline::dsm

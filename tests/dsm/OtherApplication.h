// An application of another maker inside the test: it sees the published standard's records only.
// A plus in front of a packed field hands it over by value: it may lie where no reference can.
#pragma once

#include "othermaker/Twain2.h"

#include <string>
#include <vector>

namespace paperline::test {

class OtherApplication {
public:
    OtherApplication(const std::string& managerFile, const std::string& productName);

    TW_UINT16 control(TW_UINT16 type, TW_UINT16 message, TW_MEMREF data) {
        return entry(&identity, nullptr, DG_CONTROL, type, message, data);
    }
    TW_UINT16 source(TW_IDENTITY& to, TW_UINT16 type, TW_UINT16 message, TW_MEMREF data) {
        return entry(&identity, &to, DG_CONTROL, type, message, data);
    }
    TW_UINT16 image(TW_IDENTITY& from, TW_UINT16 type, TW_MEMREF data) {
        return entry(&identity, &from, DG_IMAGE, type, MSG_GET, data);
    }
    TW_UINT16 openManager() { return control(DAT_PARENT, MSG_OPENDSM, nullptr); }
    TW_UINT16 closeManager() { return control(DAT_PARENT, MSG_CLOSEDSM, nullptr); }
    TW_UINT16 open(TW_IDENTITY& it) { return control(DAT_IDENTITY, MSG_OPENDS, &it); }
    TW_UINT16 close(TW_IDENTITY& it) { return control(DAT_IDENTITY, MSG_CLOSEDS, &it); }
    TW_UINT16 enable(TW_IDENTITY& it, TW_UINT16 message = MSG_ENABLEDS);
    TW_UINT16 finish(TW_IDENTITY& it); // drops the pages, disables
    TW_UINT16 condition();             // of the manager, for this application
    TW_UINT16 conditionOf(TW_IDENTITY& it);

    std::vector<TW_IDENTITY> sources();
    std::vector<std::string> sourceNames();
    TW_IDENTITY named(const std::string& productName); // of the list; zeroes if it is not there

    TW_UINT16 registerCallback(TW_IDENTITY* destination, TW_UINTPTR refCon);
    TW_UINT16 registerCallback2(TW_IDENTITY* destination, TW_UINTPTR refCon);

    DSMENTRYPROC entry = nullptr;
    TW_IDENTITY identity{};
};

struct ReceivedMessage {
    std::string source;
    std::string application;
    TW_UINT16 message;
    TW_UINTPTR refCon;
    bool operator==(const ReceivedMessage&) const = default;
};
std::vector<ReceivedMessage> takeMessages();                // what all callbacks have received
std::vector<ReceivedMessage> waitForMessages(size_t count); // gives up after a minute

} // namespace paperline::test

// What crosses between the application's entry and a manager, seen from the manager's side.
// A plus in front of a packed field hands it over by value: it may lie where no reference can.
#include "twain/manager/DataSourceManager.h"
#include "twain/manager/DataSourceManagerLibrary.h"

#include "RecordingManager.h"
#include "TestPlaces.h"
#include "platform/places/Places.h"
#include "twain/records/StandardRecords.h"

#include <gmock/gmock.h>

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <functional>

namespace paperline::test {
namespace {

namespace abi = twain::abi;
using testing::ElementsAre;

struct ManagerCall {
    uint32_t group;
    uint16_t type;
    uint16_t message;
    abi::Identity* origin;
    abi::Identity* destination;
    void* data;
};

std::vector<ManagerCall> calls;
std::function<uint16_t(const ManagerCall&)> answer;

uint16_t
record(void* origin, void* to, uint32_t group, uint16_t type, uint16_t message, void* data) {
    calls.push_back({group,
                     type,
                     message,
                     static_cast<abi::Identity*>(origin),
                     static_cast<abi::Identity*>(to),
                     data});
    return answer ? answer(calls.back()) : twain::TWRC_SUCCESS;
}

class Adapter : public testing::Test {
protected:
    Adapter() {
        void* library = ::dlopen(RECORDING_MANAGER, RTLD_NOW | RTLD_LOCAL);
        reinterpret_cast<SetRecordingHandler>(::dlsym(library, "setRecordingHandler"))(&record);
        ::setenv("PAPERLINE_DSM", RECORDING_MANAGER, 1);
        application.Id = 1;
        application.ProtocolMajor = 1;
        application.ProtocolMinor = 9;
        application.SupportedGroups = 3;
        application.ProductName = TW_STR32::from("Application");
        answer = [](const ManagerCall& call) -> uint16_t {
            if (call.message == twain::MSG_OPENDSM) {
                call.origin->Id = 42;
                call.origin->SupportedGroups |= 0x10000000;
            }
            return call.type == twain::DAT_ENTRYPOINT ? twain::TWRC_FAILURE : twain::TWRC_SUCCESS;
        };
    }
    ~Adapter() override {
        setDsmEntry({});
        setDsmCallObserver({});
        answer = nullptr;
        control(nullptr, twain::DAT_PARENT, twain::MSG_CLOSEDSM, nullptr);
        calls.clear();
    }

    uint16_t control(TW_IDENTITY* to, uint16_t type, uint16_t message, void* data) {
        return DSM_Entry(&application, to, twain::DG_CONTROL, type, message, data);
    }
    void openManager() {
        ASSERT_EQ(control(nullptr, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr), 0);
        calls.clear();
    }

    TestPlaces places;
    TW_IDENTITY application{};
};

// A source as a manager lists it, its strings without a zero at their end.
abi::Identity listedSource() {
    abi::Identity source{};
    source.Id = 7;
    source.SupportedGroups = 0x40000003;
    std::memset(source.Manufacturer, 'M', sizeof(source.Manufacturer));
    std::strcpy(source.ProductName, "Scanner");
    return source;
}

TEST_F(Adapter, GivesTheManagerARecordOfItsOwnAndKeepsTheApplicationsAsItIs) {
    const TW_IDENTITY before = application;
    ASSERT_EQ(control(nullptr, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr), 0);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].destination, nullptr);
    EXPECT_STREQ(calls[0].origin->ProductName, "Application");
    EXPECT_EQ(calls[0].origin->ProtocolMajor, 1);
    EXPECT_EQ(calls[0].origin->ProtocolMinor, 9);
    EXPECT_EQ(calls[1].type, twain::DAT_ENTRYPOINT); // the manager said that it has one
    TW_IDENTITY source{};
    EXPECT_EQ(control(nullptr, twain::DAT_IDENTITY, twain::MSG_GETFIRST, &source), 0);
    EXPECT_EQ(calls[2].origin, calls[0].origin); // the same record for all its calls
    EXPECT_EQ(+calls[2].origin->Id, 42U);
    EXPECT_EQ(+calls[2].origin->SupportedGroups, 0x30000003U);
    EXPECT_EQ(application.Id, 1U);
    EXPECT_EQ(application.SupportedGroups, 3U);
    EXPECT_EQ(std::memcmp(&before, &application, sizeof(before)), 0);
}

TEST_F(Adapter, SendsTheManagersOwnNumberNotTheApplications) {
    uint32_t idAtOpening = 99;
    answer = [&](const ManagerCall& call) -> uint16_t {
        idAtOpening = call.origin->Id;
        return twain::TWRC_FAILURE;
    };
    EXPECT_EQ(control(nullptr, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr),
              twain::TWRC_FAILURE);
    EXPECT_EQ(idAtOpening, 0U);
    TW_IDENTITY source{};
    control(nullptr, twain::DAT_IDENTITY, twain::MSG_GETFIRST, &source); // it is not open
    EXPECT_EQ(+calls.back().origin->Id, 0U);
}

TEST_F(Adapter, SendsASourcesRecordBackExactlyAsTheManagerGaveIt) {
    openManager();
    answer = [](const ManagerCall& call) -> uint16_t {
        *static_cast<abi::Identity*>(call.data) = listedSource();
        return twain::TWRC_SUCCESS;
    };
    TW_IDENTITY source{};
    ASSERT_EQ(control(nullptr, twain::DAT_IDENTITY, twain::MSG_GETFIRST, &source), 0);
    EXPECT_EQ(source.Id, 7U);
    EXPECT_EQ(source.ProductName.text(), "Scanner");
    EXPECT_EQ(source.Manufacturer.text(), std::string(33, 'M'));
    abi::Identity seen{};
    answer = [&](const ManagerCall& call) -> uint16_t {
        seen = *static_cast<abi::Identity*>(call.data);
        return twain::TWRC_SUCCESS;
    };
    const abi::Identity listed = listedSource();
    EXPECT_EQ(control(nullptr, twain::DAT_IDENTITY, twain::MSG_OPENDS, &source), 0);
    EXPECT_EQ(std::memcmp(&seen, &listed, sizeof(seen)), 0);
    answer = nullptr;
    TW_IDENTITY copy = source;
    control(&source, twain::DAT_PENDINGXFERS, twain::MSG_GET, nullptr);
    control(&copy, twain::DAT_PENDINGXFERS, twain::MSG_GET, nullptr);
    ASSERT_GE(calls.size(), 4U);
    const ManagerCall& last = calls.back();
    EXPECT_EQ(std::memcmp(last.destination, &listed, sizeof(listed)), 0);
    EXPECT_EQ(last.destination, calls[calls.size() - 2].destination);
}

TEST_F(Adapter, ConvertsASourceThatTheManagerDidNotTell) {
    openManager();
    TW_IDENTITY source{};
    source.Id = 5;
    source.ProductName = TW_STR32::from("Remembered");
    abi::Identity seen{};
    answer = [&](const ManagerCall& call) -> uint16_t {
        seen = *call.destination;
        return twain::TWRC_SUCCESS;
    };
    control(&source, twain::DAT_PENDINGXFERS, twain::MSG_GET, nullptr);
    EXPECT_EQ(+seen.Id, 5U);
    EXPECT_STREQ(seen.ProductName, "Remembered");
}

TEST_F(Adapter, LeavesASourcesRecordAloneUnlessTheManagerFilledIt) {
    openManager();
    for (const uint16_t code : {twain::TWRC_FAILURE, twain::TWRC_ENDOFLIST, twain::TWRC_CANCEL}) {
        answer = [&](const ManagerCall& call) -> uint16_t {
            *static_cast<abi::Identity*>(call.data) = listedSource();
            return code;
        };
        TW_IDENTITY source{};
        source.Id = 3;
        EXPECT_EQ(control(nullptr, twain::DAT_IDENTITY, twain::MSG_GETNEXT, &source), code);
        EXPECT_EQ(source.Id, 3U);
        EXPECT_EQ(source.ProductName.text(), "");
    }
}

TEST_F(Adapter, ConvertsDataBothWaysAndNotAfterAFailure) {
    openManager();
    uint16_t code = twain::TWRC_XFERDONE;
    answer = [&](const ManagerCall& call) -> uint16_t {
        if (call.type != twain::DAT_IMAGEMEMXFER) // the failure's condition
            return twain::TWRC_FAILURE;
        auto* transfer = static_cast<abi::ImageMemXfer*>(call.data);
        EXPECT_EQ(+transfer->Compression, 0xffff);
        EXPECT_EQ(+transfer->Memory.Flags, 9U);
        EXPECT_EQ(+transfer->Memory.Length, 4096U);
        EXPECT_EQ(+transfer->Memory.TheMem, this);
        transfer->Rows = 17;
        return code;
    };
    const auto strip = [&] {
        TW_IMAGEMEMXFER transfer{};
        transfer.Compression = 0xffff;
        transfer.Rows = 0xffffffff;
        transfer.Memory = {9, 4096, this};
        EXPECT_EQ(DSM_Entry(&application,
                            nullptr,
                            twain::DG_IMAGE,
                            twain::DAT_IMAGEMEMXFER,
                            twain::MSG_GET,
                            &transfer),
                  code);
        return transfer.Rows;
    };
    EXPECT_EQ(strip(), 17U);
    code = twain::TWRC_FAILURE;
    EXPECT_EQ(strip(), 0xffffffffU);
}

TEST_F(Adapter, GivesSourcesAUserInterfaceRecordEvenWithoutOne) {
    openManager();
    answer = [](const ManagerCall& call) -> uint16_t {
        const abi::UserInterface none{};
        EXPECT_NE(call.data, nullptr);
        return call.data != nullptr && std::memcmp(call.data, &none, sizeof(none)) == 0
                   ? twain::TWRC_SUCCESS
                   : twain::TWRC_FAILURE;
    };
    EXPECT_EQ(control(nullptr, twain::DAT_USERINTERFACE, twain::MSG_DISABLEDS, nullptr), 0);
}

TEST_F(Adapter, PassesHandlesAndCapabilitiesUntouched) {
    openManager();
    int anything = 0;
    control(nullptr, twain::DAT_CAPABILITY, twain::MSG_GET, &anything);
    EXPECT_EQ(calls.back().data, &anything);
    TW_HANDLE handle = nullptr;
    DSM_Entry(&application,
              nullptr,
              twain::DG_IMAGE,
              twain::DAT_IMAGENATIVEXFER,
              twain::MSG_GET,
              &handle);
    EXPECT_EQ(calls.back().data, &handle);
}

TEST_F(Adapter, PassesUnknownTripletsOnlyWithoutData) {
    openManager();
    int anything = 0;
    constexpr uint16_t unknown = 0x0999;
    for (const uint32_t group : {twain::DG_CONTROL, twain::DG_IMAGE, twain::DG_AUDIO}) {
        EXPECT_EQ(DSM_Entry(&application, nullptr, group, unknown, twain::MSG_GET, &anything),
                  twain::TWRC_FAILURE);
        EXPECT_TRUE(calls.empty());
        EXPECT_EQ(DSM_Entry(&application, nullptr, group, unknown, twain::MSG_GET, nullptr), 0);
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].group, group);
        EXPECT_EQ(calls[0].data, nullptr);
        calls.clear();
    }
    EXPECT_EQ(DSM_Entry(nullptr, nullptr, twain::DG_CONTROL, unknown, twain::MSG_GET, nullptr),
              twain::TWRC_FAILURE);
}

uint16_t ignoreMessage(TW_IDENTITY*, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16, TW_MEMREF) {
    return 0;
}

TEST_F(Adapter, RegistersACallbackOfItsOwnInPlaceOfTheApplications) {
    openManager();
    abi::Callback seen{};
    answer = [&](const ManagerCall& call) -> uint16_t {
        seen = *static_cast<abi::Callback*>(call.data);
        return twain::TWRC_SUCCESS;
    };
    TW_CALLBACK callback{reinterpret_cast<void*>(&ignoreMessage), 0x12345678, 0};
    EXPECT_EQ(control(nullptr, twain::DAT_CALLBACK, twain::MSG_REGISTER_CALLBACK, &callback), 0);
    EXPECT_NE(seen.CallBackProc, nullptr);
    EXPECT_NE(seen.CallBackProc, callback.CallBackProc);
    EXPECT_EQ(seen.Message, 0);
}

TEST_F(Adapter, RegistersARefusedCallbackAgainWithTheOpenSource) {
    openManager();
    std::vector<std::string> registrations;
    answer = [&](const ManagerCall& call) -> uint16_t {
        if (call.type != twain::DAT_CALLBACK) {
            *static_cast<abi::Identity*>(call.data) = listedSource();
            return twain::TWRC_SUCCESS;
        }
        registrations.push_back(call.destination != nullptr ? call.destination->ProductName
                                                            : "none");
        return call.destination != nullptr ? twain::TWRC_SUCCESS : twain::TWRC_FAILURE;
    };
    TW_CALLBACK callback{reinterpret_cast<void*>(&ignoreMessage), 1, 0};
    EXPECT_EQ(control(nullptr, twain::DAT_CALLBACK, twain::MSG_REGISTER_CALLBACK, &callback), 0);
    TW_IDENTITY source{};
    control(nullptr, twain::DAT_IDENTITY, twain::MSG_GETFIRST, &source);
    EXPECT_THAT(registrations, ElementsAre("none"));
    EXPECT_EQ(control(nullptr, twain::DAT_IDENTITY, twain::MSG_OPENDS, &source), 0);
    EXPECT_THAT(registrations, ElementsAre("none", "Scanner"));
}

TEST_F(Adapter, TellsAFailedRegistrationWithADestination) {
    openManager();
    answer = [](const ManagerCall&) -> uint16_t { return twain::TWRC_FAILURE; };
    TW_IDENTITY source{};
    TW_CALLBACK callback{reinterpret_cast<void*>(&ignoreMessage), 1, 0};
    EXPECT_EQ(control(&source, twain::DAT_CALLBACK, twain::MSG_REGISTER_CALLBACK, &callback),
              twain::TWRC_FAILURE);
}

TEST_F(Adapter, ShowsEveryCallToTheObserver) {
    std::vector<std::string> seen;
    setDsmCallObserver({[&](TW_UINT32 group, TW_UINT16 type, TW_UINT16 message) {
                            EXPECT_EQ(group, twain::DG_CONTROL);
                            seen.push_back(std::to_string(type) + "/" + std::to_string(message));
                        },
                        [&](TW_UINT16 code) { seen.push_back("= " + std::to_string(code)); }});
    control(nullptr, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr);
    EXPECT_THAT(seen, ElementsAre("4/769", "= 0", "1027/1", "= 1"));
    seen.clear();
    setDsmEntry([](TW_IDENTITY*, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16, TW_MEMREF) {
        return TW_UINT16{5};
    });
    EXPECT_EQ(control(nullptr, twain::DAT_STATUS, twain::MSG_GET, nullptr), 5);
    EXPECT_THAT(seen, ElementsAre("8/1", "= 5"));
    setDsmEntry({});
}

TEST_F(Adapter, LetsATestTakeThePlaceOfTheManager) {
    TW_IDENTITY* seenOrigin = nullptr;
    setDsmEntry([&](TW_IDENTITY* origin, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16, TW_MEMREF)
                    -> TW_UINT16 {
        seenOrigin = origin;
        setDsmEntry({}); // from inside the call
        return 3;
    });
    EXPECT_EQ(control(nullptr, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr), 3);
    EXPECT_EQ(seenOrigin, &application); // the application's own record
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(control(nullptr, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr), 0);
    EXPECT_FALSE(calls.empty());
}

TEST_F(Adapter, FailsWithOneLineWhereThereIsNoManager) {
    for (const std::string& file :
         {(places.folder() / "missing.so").string(), std::string(OTHERMAKER_NOENTRY)}) {
        ::setenv("PAPERLINE_DSM", file.c_str(), 1);
        testing::internal::CaptureStderr();
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(control(nullptr, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr),
                      twain::TWRC_FAILURE);
        const std::string lines = testing::internal::GetCapturedStderr();
        EXPECT_THAT(lines, testing::HasSubstr(file));
        EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 1) << lines;
    }
}

TEST_F(Adapter, LoadsOurManagerUnlessAnotherIsNamed) {
    EXPECT_EQ(dataSourceManagerFile(), RECORDING_MANAGER);
    ::unsetenv("PAPERLINE_DSM");
    setBundlePath("/opt/Paperline.app");
    EXPECT_EQ(dataSourceManagerFile(),
              "/opt/Paperline.app/Contents/Frameworks/libpaperline-dsm.so");
    ::setenv("PAPERLINE_DSM", "", 1);
    EXPECT_EQ(dataSourceManagerFile(),
              "/opt/Paperline.app/Contents/Frameworks/libpaperline-dsm.so");
}

} // namespace
} // namespace paperline::test

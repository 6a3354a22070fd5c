// Opening sources, calls to them, and the messages that they send.
#include "OtherApplication.h"
#include "TestPlaces.h"

#include <gmock/gmock.h>

#include <dlfcn.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace paperline::test {
namespace {

using testing::ElementsAre;

class ManagerSession : public testing::Test {
protected:
    ManagerSession() : application(places.managerFile(), "One") {
        places.addPlain("1alpha.ds", OTHERMAKER_ALPHA);
        places.addPlain("2beta.ds", OTHERMAKER_BETA);
        places.addPlain("3closed.ds", OTHERMAKER_CLOSED);
        places.addPlain("4shared.ds", OTHERMAKER_SHARED);
        takeMessages();
        EXPECT_EQ(application.openManager(), TWRC_SUCCESS);
        alpha = application.named("Alpha");
        beta = application.named("Beta");
    }
    ~ManagerSession() override { EXPECT_EQ(application.closeManager(), TWRC_SUCCESS); }

    void expectFailure(TW_UINT16 code, TW_UINT16 condition) {
        EXPECT_EQ(code, TWRC_FAILURE);
        EXPECT_EQ(application.condition(), condition);
    }

    TestPlaces places;
    OtherApplication application;
    TW_IDENTITY alpha{};
    TW_IDENTITY beta{};
};

TEST_F(ManagerSession, ChecksTheStateOfTheSource) {
    TW_PENDINGXFERS pending{};
    expectFailure(application.source(alpha, DAT_PENDINGXFERS, MSG_GET, &pending), TWCC_SEQERROR);
    expectFailure(application.close(alpha), TWCC_SEQERROR);
    expectFailure(application.registerCallback(&alpha, 1), TWCC_SEQERROR);
    ASSERT_EQ(application.open(alpha), TWRC_SUCCESS);
    expectFailure(application.open(alpha), TWCC_SEQERROR);
    expectFailure(application.closeManager(), TWCC_SEQERROR);
    EXPECT_EQ(application.source(alpha, DAT_PENDINGXFERS, MSG_GET, &pending), TWRC_SUCCESS);
    EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
    expectFailure(application.source(alpha, DAT_PENDINGXFERS, MSG_GET, &pending), TWCC_SEQERROR);
}

TEST_F(ManagerSession, ChecksTheDestination) {
    TW_IDENTITY unknown{};
    unknown.Id = 4711;
    std::strcpy(unknown.ProductName, "Unknown");
    TW_PENDINGXFERS pending{};
    TW_IMAGEINFO info{};
    expectFailure(application.source(unknown, DAT_PENDINGXFERS, MSG_GET, &pending), TWCC_BADDEST);
    EXPECT_EQ(application.conditionOf(unknown), TWCC_SUCCESS); // the manager answers, nothing new
    expectFailure(application.close(unknown), TWCC_BADDEST);
    expectFailure(application.registerCallback(&unknown, 1), TWCC_BADDEST);
    expectFailure(application.open(unknown), TWCC_NODS);
    expectFailure(
        application.entry(&application.identity, nullptr, DG_IMAGE, DAT_IMAGEINFO, MSG_GET, &info),
        TWCC_BADDEST);
    expectFailure(application.control(DAT_PENDINGXFERS, MSG_GET, &pending), TWCC_BADDEST);
}

TEST_F(ManagerSession, RefusesTripletsThatItDoesNotKnow) {
    TW_IDENTITY identity{};
    expectFailure(application.control(DAT_PARENT, MSG_GET, nullptr), TWCC_BADPROTOCOL);
    expectFailure(application.control(DAT_IDENTITY, MSG_RESET, &identity), TWCC_BADPROTOCOL);
    expectFailure(application.control(DAT_IDENTITY, MSG_GETFIRST, nullptr), TWCC_BADVALUE);
    expectFailure(application.control(DAT_CALLBACK, MSG_GET, &identity), TWCC_BADPROTOCOL);
    expectFailure(application.control(DAT_CALLBACK, MSG_REGISTER_CALLBACK, nullptr), TWCC_BADVALUE);
    expectFailure(application.control(DAT_STATUS, MSG_SET, &identity), TWCC_BADPROTOCOL);
    expectFailure(application.control(DAT_ENTRYPOINT, MSG_SET, &identity), TWCC_BADPROTOCOL);
    EXPECT_EQ(application.entry(nullptr, nullptr, DG_CONTROL, DAT_PARENT, MSG_OPENDSM, nullptr),
              TWRC_FAILURE);
}

TEST_F(ManagerSession, RefusesAnApplicationThatIsNotOpen) {
    OtherApplication other(places.managerFile(), "Other");
    TW_IDENTITY identity{};
    EXPECT_EQ(other.control(DAT_IDENTITY, MSG_GETFIRST, &identity), TWRC_FAILURE);
    EXPECT_EQ(other.condition(), TWCC_SEQERROR);
    EXPECT_EQ(other.registerCallback(nullptr, 1), TWRC_FAILURE);
}

TEST_F(ManagerSession, OpensByNumberByNameAndByDefault) {
    TW_IDENTITY byNumber{};
    byNumber.Id = beta.Id;
    EXPECT_EQ(application.open(byNumber), TWRC_SUCCESS);
    EXPECT_EQ(std::memcmp(&byNumber, &beta, sizeof(beta)), 0); // filled in
    EXPECT_EQ(application.close(byNumber), TWRC_SUCCESS);

    TW_IDENTITY byName{};
    byName.Id = alpha.Id; // an old number; the name counts
    std::strcpy(byName.ProductName, "Beta");
    EXPECT_EQ(application.open(byName), TWRC_SUCCESS);
    EXPECT_EQ(+byName.Id, +beta.Id);
    EXPECT_EQ(application.close(byName), TWRC_SUCCESS);

    TW_IDENTITY none{};
    EXPECT_EQ(application.open(none), TWRC_SUCCESS);
    EXPECT_STREQ(none.ProductName, "Alpha");
    EXPECT_EQ(application.close(none), TWRC_SUCCESS);
}

TEST_F(ManagerSession, TellsTheConditionOfASourceThatDoesNotOpen) {
    TW_IDENTITY closed = application.named("Closed");
    expectFailure(application.open(closed), TWCC_MAXCONNECTIONS);
    expectFailure(application.close(closed), TWCC_SEQERROR);
}

TEST_F(ManagerSession, LeavesConditionsOfAnOpenSourceToTheSource) {
    ASSERT_EQ(application.open(alpha), TWRC_SUCCESS);
    TW_IMAGEINFO info{};
    EXPECT_EQ(application.image(alpha, DAT_IMAGEINFO, &info), TWRC_FAILURE);
    EXPECT_EQ(application.condition(), TWCC_SUCCESS);
    EXPECT_EQ(application.conditionOf(alpha), TWCC_SEQERROR);
    ASSERT_EQ(application.enable(alpha), TWRC_SUCCESS);
    EXPECT_EQ(application.close(alpha), TWRC_FAILURE); // still enabled: the source refuses
    EXPECT_EQ(application.condition(), TWCC_SEQERROR);
    EXPECT_EQ(application.finish(alpha), TWRC_SUCCESS);
    EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
}

TEST_F(ManagerSession, CarriesMessagesToTheCallbackOfTheSourceElseOfTheApplication) {
    constexpr TW_UINTPTR wide = 0x123456789abcdef0; // only the newer record has room for it
    ASSERT_EQ(application.registerCallback2(nullptr, wide), TWRC_SUCCESS);
    ASSERT_EQ(application.open(alpha), TWRC_SUCCESS);
    ASSERT_EQ(application.open(beta), TWRC_SUCCESS);
    ASSERT_EQ(application.registerCallback(&beta, 22), TWRC_SUCCESS);
    ASSERT_EQ(application.enable(alpha), TWRC_SUCCESS); // reports before it returns
    EXPECT_THAT(takeMessages(), ElementsAre(ReceivedMessage{"Alpha", "One", MSG_XFERREADY, wide}));
    ASSERT_EQ(application.enable(beta), TWRC_SUCCESS); // reports from its own thread
    EXPECT_THAT(waitForMessages(1), ElementsAre(ReceivedMessage{"Beta", "One", MSG_XFERREADY, 22}));
    EXPECT_EQ(application.finish(alpha), TWRC_SUCCESS);
    EXPECT_EQ(application.finish(beta), TWRC_SUCCESS);
    EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
    EXPECT_EQ(application.close(beta), TWRC_SUCCESS);

    ASSERT_EQ(application.open(beta), TWRC_SUCCESS); // its own registration went with its closing
    ASSERT_EQ(application.enable(beta, MSG_ENABLEDSUIONLY), TWRC_SUCCESS);
    EXPECT_THAT(waitForMessages(1),
                ElementsAre(ReceivedMessage{"Beta", "One", MSG_CLOSEDSREQ, wide}));
    EXPECT_EQ(application.finish(beta), TWRC_SUCCESS);
    EXPECT_EQ(application.close(beta), TWRC_SUCCESS);
}

TEST_F(ManagerSession, TellsApplicationsOfOneProcessApart) {
    OtherApplication two(places.managerFile(), "Two");
    ASSERT_EQ(two.openManager(), TWRC_SUCCESS);
    ASSERT_EQ(application.registerCallback(nullptr, 1), TWRC_SUCCESS);
    ASSERT_EQ(two.registerCallback(nullptr, 2), TWRC_SUCCESS);
    ASSERT_EQ(application.open(alpha), TWRC_SUCCESS);
    ASSERT_EQ(two.open(beta), TWRC_SUCCESS);
    EXPECT_EQ(two.open(alpha), TWRC_FAILURE); // the source takes one application
    EXPECT_EQ(two.condition(), TWCC_SEQERROR);
    EXPECT_EQ(two.source(alpha, DAT_PENDINGXFERS, MSG_GET, nullptr), TWRC_FAILURE);
    EXPECT_EQ(two.condition(), TWCC_SEQERROR);
    two.enable(beta, MSG_ENABLEDSUIONLY);
    application.enable(alpha, MSG_ENABLEDSUIONLY);
    EXPECT_THAT(takeMessages(),
                ElementsAre(ReceivedMessage{"Beta", "Two", MSG_CLOSEDSREQ, 2},
                            ReceivedMessage{"Alpha", "One", MSG_CLOSEDSREQ, 1}));
    two.finish(beta);
    application.finish(alpha);
    EXPECT_EQ(two.close(beta), TWRC_SUCCESS);
    EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
    EXPECT_EQ(two.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerSession, SendsAMessageToTheApplicationThatTheSourceNames) {
    OtherApplication two(places.managerFile(), "Two");
    ASSERT_EQ(two.openManager(), TWRC_SUCCESS);
    application.registerCallback(nullptr, 1);
    two.registerCallback(nullptr, 2);
    TW_IDENTITY source = application.named("Shared");
    ASSERT_EQ(application.open(source), TWRC_SUCCESS);
    ASSERT_EQ(two.open(source), TWRC_SUCCESS);
    for (OtherApplication* receiver : {&two, &application, &two})
        EXPECT_EQ(application.entry(
                      &source, &receiver->identity, DG_CONTROL, DAT_NULL, MSG_DEVICEEVENT, nullptr),
                  TWRC_SUCCESS);
    EXPECT_THAT(takeMessages(),
                ElementsAre(ReceivedMessage{"Shared", "Two", MSG_DEVICEEVENT, 2},
                            ReceivedMessage{"Shared", "One", MSG_DEVICEEVENT, 1},
                            ReceivedMessage{"Shared", "Two", MSG_DEVICEEVENT, 2}));
    EXPECT_EQ(two.close(source), TWRC_SUCCESS);
    EXPECT_EQ(application.close(source), TWRC_SUCCESS);
    EXPECT_EQ(two.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerSession, KeepsMessagesForAnApplicationThatPolls) {
    ASSERT_EQ(application.open(alpha), TWRC_SUCCESS);
    TW_EVENT event{nullptr, 77};
    EXPECT_EQ(application.source(alpha, DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_NOTDSEVENT);
    EXPECT_EQ(event.TWMessage, MSG_NULL);
    application.enable(alpha);
    EXPECT_EQ(application.source(alpha, DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_DSEVENT);
    EXPECT_EQ(event.TWMessage, MSG_XFERREADY);
    EXPECT_EQ(application.source(alpha, DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_NOTDSEVENT);
    for (int i = 0; i < 40; ++i) // nobody polls: the row does not grow without end
        EXPECT_EQ(
            application.entry(
                &alpha, &application.identity, DG_CONTROL, DAT_NULL, MSG_DEVICEEVENT, nullptr),
            i < 32 ? TWRC_SUCCESS : TWRC_FAILURE);
    application.finish(alpha);
    EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
}

TEST_F(ManagerSession, TakesMessagesOnlyFromSourcesThatAreOpen) {
    application.registerCallback(nullptr, 1);
    const auto message = [&](TW_IDENTITY* from) {
        return application.entry(
            from, &application.identity, DG_CONTROL, DAT_NULL, MSG_XFERREADY, nullptr);
    };
    EXPECT_EQ(message(&alpha), TWRC_FAILURE);
    EXPECT_EQ(message(nullptr), TWRC_FAILURE);
    ASSERT_EQ(application.open(alpha), TWRC_SUCCESS);
    EXPECT_EQ(message(&alpha), TWRC_SUCCESS);
    EXPECT_EQ(message(&beta), TWRC_FAILURE);
    TW_IDENTITY forgetful = alpha; // some sources send the record that they were built with
    forgetful.Id = 0;
    EXPECT_EQ(message(&forgetful), TWRC_SUCCESS);
    EXPECT_EQ(takeMessages().size(), 2U);
    EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
}

TEST_F(ManagerSession, GivesItsEntryPointToWhoeverHasRoomForIt) {
    TW_ENTRYPOINT entryPoint{};
    expectFailure(application.control(DAT_ENTRYPOINT, MSG_GET, nullptr), TWCC_BADVALUE);
    entryPoint.Size = sizeof(entryPoint) - 1;
    expectFailure(application.control(DAT_ENTRYPOINT, MSG_GET, &entryPoint), TWCC_BADVALUE);
    entryPoint.Size = sizeof(entryPoint);
    ASSERT_EQ(application.control(DAT_ENTRYPOINT, MSG_GET, &entryPoint), TWRC_SUCCESS);
    EXPECT_EQ(+entryPoint.DSM_Entry, application.entry);
    TW_HANDLE handle = entryPoint.DSM_MemAllocate(1000);
    const auto* bytes = static_cast<const char*>(entryPoint.DSM_MemLock(handle));
    EXPECT_EQ(std::string(bytes, 1000), std::string(1000, '\0'));
    entryPoint.DSM_MemUnlock(handle);
    entryPoint.DSM_MemFree(handle);
}

OtherApplication* nestedApplication = nullptr;
TW_IDENTITY nestedSource{};
TW_UINT16 nestedCode = 0xffff;

TW_UINT16
openAnotherSource(TW_IDENTITY*, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16, TW_MEMREF) {
    nestedCode = nestedApplication->open(nestedSource);
    return TWRC_SUCCESS;
}

TEST_F(ManagerSession, MayBeCalledFromInsideACallback) {
    nestedApplication = &application;
    nestedSource = beta;
    TW_CALLBACK record{reinterpret_cast<TW_MEMREF>(&openAnotherSource), 0, MSG_NULL};
    application.control(DAT_CALLBACK, MSG_REGISTER_CALLBACK, &record);
    ASSERT_EQ(application.open(alpha), TWRC_SUCCESS);
    EXPECT_EQ(application.enable(alpha), TWRC_SUCCESS);
    EXPECT_EQ(nestedCode, TWRC_SUCCESS);
    application.finish(alpha);
    EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
    EXPECT_EQ(application.close(beta), TWRC_SUCCESS);
}

TEST_F(ManagerSession, TakesMessagesFromThreadsWhileSourcesOpenAndClose) {
    application.registerCallback(nullptr, 1);
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&, from = alpha, to = application.identity]() mutable {
            while (!stop)
                application.entry(&from, &to, DG_CONTROL, DAT_NULL, MSG_DEVICEEVENT, nullptr);
        });
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(application.open(alpha), TWRC_SUCCESS);
        EXPECT_EQ(application.close(alpha), TWRC_SUCCESS);
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    for (const ReceivedMessage& message : takeMessages())
        EXPECT_EQ(message.source, "Alpha");
}

} // namespace
} // namespace paperline::test

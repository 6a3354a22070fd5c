#include "twain/TWAINHandler.h"

#include "ScriptedDsm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace paperline {
namespace {

using namespace test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TW_UINT16 ignoreMessage(TW_IDENTITY*, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16, TW_MEMREF) {
    return twain::TWRC_SUCCESS;
}

class TWAINHandlerTest : public ::testing::Test {
protected:
    TWAINHandlerTest() {
        dsm.sources.push_back({.identity = sourceIdentity("Corvane", "First")});
        dsm.sources.push_back({.identity = sourceIdentity("Corvane", "Second")});
        handler = std::make_unique<TWAINHandler>(
            TWAINHandler::ApplicationStrings{TW_STR32::from("Hatsell"),
                                             TW_STR32::from("PageCentral"),
                                             TW_STR32::from("Roaming Leaf GATHER"),
                                             TW_STR32::from("1.00")});
    }
    ScriptedDsm dsm;
    std::unique_ptr<TWAINHandler> handler;
};

TEST_F(TWAINHandlerTest, StartsWithNothingReachedAndAnEmptySource) {
    EXPECT_FALSE(handler->dsmOpen);
    EXPECT_FALSE(handler->dsOpen);
    EXPECT_FALSE(handler->dsIdentityValid);
    EXPECT_FALSE(handler->dsEnabled);
    EXPECT_EQ(handler->dsIdentity.Id, 0U);
    EXPECT_EQ(handler->dsIdentity.ProductName.bytes[0], 0);
    EXPECT_THAT(dsm.calls(), IsEmpty());
}

TEST_F(TWAINHandlerTest, SendsTheApplicationsIdentityWithOpenDsm) {
    EXPECT_EQ(handler->OpenDSM(), 0);
    ASSERT_EQ(dsm.calls().size(), 1U);
    const RecordedCall& call = dsm.calls()[0];
    EXPECT_EQ(call.triplet, openDsm);
    EXPECT_FALSE(call.destination);
    EXPECT_EQ(call.origin.Id, 1U);
    EXPECT_EQ(call.origin.Version.MajorNum, 1);
    EXPECT_EQ(call.origin.Version.MinorNum, 0);
    EXPECT_EQ(call.origin.Version.Language, 13);
    EXPECT_EQ(call.origin.Version.Country, 1);
    EXPECT_EQ(call.origin.Version.Info.text(), "1.00");
    EXPECT_EQ(call.origin.ProtocolMajor, 1);
    EXPECT_EQ(call.origin.ProtocolMinor, 9);
    EXPECT_EQ(call.origin.SupportedGroups, 3U);
    EXPECT_EQ(call.origin.Manufacturer.bytes[0], 7);
    EXPECT_EQ(call.origin.Manufacturer.text(), "Hatsell");
    EXPECT_EQ(call.origin.ProductFamily.text(), "PageCentral");
    EXPECT_EQ(call.origin.ProductName.text(), "Roaming Leaf GATHER");
}

TEST_F(TWAINHandlerTest, MarksTheManagerOpenEvenWhenItDoesNotOpen) {
    dsm.fail(openDsm, twain::TWRC_FAILURE);
    EXPECT_EQ(handler->OpenDSM(), twain::TWRC_FAILURE);
    EXPECT_TRUE(handler->dsmOpen);
    // Later operations call the manager as if it were open.
    TW_IDENTITY identity{};
    EXPECT_EQ(handler->GetIdentity(twain::MSG_GETFIRST, identity), 0);
}

TEST_F(TWAINHandlerTest, ClosesNothingThatWasNeverOpen) {
    EXPECT_EQ(handler->CloseDSM(), -1);
    EXPECT_THAT(dsm.calls(), IsEmpty());
}

TEST_F(TWAINHandlerTest, IgnoresWhatTheManagerAnswersToClosing) {
    handler->OpenDSM();
    handler->dsOpen = true;
    handler->dsEnabled = true;
    dsm.fail(closeDsm, twain::TWRC_FAILURE);
    EXPECT_EQ(handler->CloseDSM(), 0);
    EXPECT_FALSE(handler->dsmOpen);
    EXPECT_FALSE(handler->dsOpen);
    EXPECT_FALSE(handler->dsEnabled);
}

TEST_F(TWAINHandlerTest, OpensTheManagerBeforeOperationsThatNeedIt) {
    TW_IDENTITY identity{};
    handler->GetIdentity(twain::MSG_GETFIRST, identity);
    handler->RegisterCallback(ignoreMessage, 0);
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/PARENT/OPENDSM",
                            "CONTROL/IDENTITY/GETFIRST",
                            "CONTROL/CALLBACK/REGISTER_CALLBACK"));
}

TEST_F(TWAINHandlerTest, ReportsAManagerThatDoesNotOpenOnTheWay) {
    dsm.fail(openDsm, twain::TWRC_FAILURE);
    EXPECT_EQ(handler->UserSelect(), 0xffff);
    EXPECT_FALSE(handler->dsIdentityValid);
    TW_IDENTITY identity{};
    const auto fresh = [&] { handler->dsmOpen = false; };
    fresh();
    EXPECT_EQ(handler->GetIdentity(twain::MSG_GETFIRST, identity), -1);
    fresh();
    EXPECT_EQ(handler->OpenDS(), -1);
    fresh();
    EXPECT_EQ(handler->RegisterCallback(ignoreMessage, 0), -1);
    fresh();
    EXPECT_EQ(handler->DSMCall(twain::DG_CONTROL, twain::DAT_STATUS, twain::MSG_GET, nullptr), -1);
    EXPECT_EQ(dsm.count(openDsm), 4U);
    EXPECT_EQ(dsm.calls().size(), 4U);
}

TEST_F(TWAINHandlerTest, TakesTheIdentityOfTheListIntoItsDestination) {
    TW_IDENTITY identity{};
    EXPECT_EQ(handler->GetIdentity(twain::MSG_GETFIRST, identity), 0);
    EXPECT_EQ(handler->dsIdentity.ProductName.text(), "First");
    EXPECT_EQ(handler->GetIdentity(twain::MSG_GETNEXT, identity), 0);
    EXPECT_EQ(handler->GetDSIdentity()->ProductName.text(), "Second");
    EXPECT_EQ(handler->GetDSIdentity()->Id, 101U);
    EXPECT_EQ(handler->GetIdentity(twain::MSG_GETNEXT, identity), twain::TWRC_ENDOFLIST);
    EXPECT_EQ(handler->dsIdentity.ProductName.text(), "Second");
    EXPECT_TRUE(handler->dsIdentityValid);
}

TEST_F(TWAINHandlerTest, CountsTheIdentityValidEvenAfterAFailure) {
    dsm.fail(getDefault, twain::TWRC_FAILURE);
    TW_IDENTITY identity{};
    EXPECT_EQ(handler->GetIdentity(twain::MSG_GETDEFAULT, identity), twain::TWRC_FAILURE);
    EXPECT_TRUE(handler->dsIdentityValid);
    EXPECT_EQ(handler->dsIdentity.ProductName.bytes[0], 0);
}

TEST_F(TWAINHandlerTest, SelectsIntoAZeroedIdentity) {
    dsm.defaultSource = 1;
    EXPECT_EQ(handler->UserSelect(), 0);
    EXPECT_EQ(handler->dsIdentity.ProductName.text(), "Second");
    EXPECT_THAT(dsm.last(userSelect)->sent, ::testing::Each(0));
    EXPECT_TRUE(handler->dsIdentityValid);
}

TEST_F(TWAINHandlerTest, KeepsTheSourceWhenTheSelectionIsCancelled) {
    TW_IDENTITY identity{};
    handler->GetIdentity(twain::MSG_GETFIRST, identity);
    dsm.fail(userSelect, twain::TWRC_CANCEL);
    EXPECT_EQ(handler->UserSelect(), twain::TWRC_CANCEL);
    EXPECT_EQ(handler->dsIdentity.ProductName.text(), "First");
}

TEST_F(TWAINHandlerTest, TakesItsSourceForChosenEvenAfterACancelledSelection) {
    dsm.fail(userSelect, twain::TWRC_CANCEL);
    EXPECT_EQ(handler->UserSelect(), twain::TWRC_CANCEL);
    EXPECT_TRUE(handler->dsIdentityValid);
}

TEST_F(TWAINHandlerTest, OpensTheSourceWithoutADestination) {
    TW_IDENTITY identity{};
    handler->GetIdentity(twain::MSG_GETFIRST, identity);
    EXPECT_EQ(handler->OpenDS(), 0);
    EXPECT_TRUE(handler->dsOpen);
    EXPECT_FALSE(dsm.last(openDs)->destination);
    EXPECT_EQ(dsm.last(openDs)->sentAs<TW_IDENTITY>().ProductName.text(), "First");
}

TEST_F(TWAINHandlerTest, OpensAnOpenSourceAgainAndHandsBackTheAnswer) {
    TW_IDENTITY identity{};
    handler->GetIdentity(twain::MSG_GETFIRST, identity);
    handler->OpenDS();
    dsm.fail(openDs, twain::TWRC_FAILURE, 1);
    EXPECT_EQ(handler->OpenDS(), twain::TWRC_FAILURE);
    EXPECT_EQ(dsm.count(openDs), 2U);
    EXPECT_TRUE(handler->dsOpen);
}

TEST_F(TWAINHandlerTest, ClosesTheSourceWhateverItAnswers) {
    handler->dsOpen = true;
    handler->dsEnabled = true;
    dsm.fail(closeDs, twain::TWRC_FAILURE);
    EXPECT_EQ(handler->CloseDS(), twain::TWRC_FAILURE);
    EXPECT_FALSE(handler->dsOpen);
    EXPECT_FALSE(handler->dsEnabled);
}

TEST_F(TWAINHandlerTest, KeepsTheEnabledFlagInStepWithTheSource) {
    TW_IDENTITY identity{};
    handler->GetIdentity(twain::MSG_GETFIRST, identity);
    handler->OpenDS();
    TW_USERINTERFACE record{.ShowUI = 1, .ModalUI = 0, .hParent = nullptr};

    dsm.fail(enableDs, twain::TWRC_FAILURE, 0);
    EXPECT_EQ(handler->EnableDS(&record), twain::TWRC_FAILURE);
    EXPECT_FALSE(handler->dsEnabled);
    EXPECT_EQ(handler->EnableDS(&record), 0);
    EXPECT_TRUE(handler->dsEnabled);
    EXPECT_EQ(dsm.last(enableDs)->destination->ProductName.text(), "First");
    EXPECT_EQ(dsm.last(enableDs)->sentAs<TW_USERINTERFACE>().ShowUI, 1);

    dsm.fail(disableDs, twain::TWRC_FAILURE, 0);
    EXPECT_EQ(handler->DisableDS(&record), twain::TWRC_FAILURE);
    EXPECT_TRUE(handler->dsEnabled);
    EXPECT_EQ(handler->DisableDS(nullptr), 0);
    EXPECT_FALSE(handler->dsEnabled);
    EXPECT_THAT(dsm.last(disableDs)->sent, IsEmpty());

    EXPECT_EQ(handler->EnableDSUIOnly(&record), 0);
    EXPECT_TRUE(handler->dsEnabled);
    EXPECT_EQ(dsm.count(enableDsUiOnly), 1U);
}

TEST_F(TWAINHandlerTest, HandsOnTheLow32BitsOfTheReference) {
    EXPECT_EQ(handler->RegisterCallback(ignoreMessage, 0x1122334455667788), 0);
    const auto record = dsm.last(registerCallback)->sentAs<TW_CALLBACK>();
    EXPECT_EQ(record.CallBackProc, reinterpret_cast<void*>(&ignoreMessage));
    EXPECT_EQ(record.RefCon, 0x55667788U);
    EXPECT_EQ(record.Message, 0);
    EXPECT_FALSE(dsm.last(registerCallback)->destination);
}

TEST_F(TWAINHandlerTest, SendsAnyTripletToManagerOrSource) {
    TW_STATUS status{};
    EXPECT_EQ(handler->DSMCall(twain::DG_CONTROL, twain::DAT_STATUS, twain::MSG_GET, &status), -1);
    handler->OpenDSM();
    handler->DSMCall(twain::DG_CONTROL, twain::DAT_STATUS, twain::MSG_GET, &status);
    EXPECT_FALSE(dsm.calls().back().destination);
    handler->dsmOpen = false; // the source is called without a look at it
    handler->DSCall(twain::DG_CONTROL, twain::DAT_STATUS, twain::MSG_GET, &status);
    EXPECT_TRUE(dsm.calls().back().destination);
}

TEST_F(TWAINHandlerTest, TakesTheSessionDownInReverse) {
    TW_IDENTITY identity{};
    TW_USERINTERFACE record{.ShowUI = 1, .ModalUI = 0, .hParent = nullptr};
    handler->GetIdentity(twain::MSG_GETFIRST, identity);
    handler->OpenDS();
    handler->EnableDS(&record);
    dsm.forgetCalls();
    handler.reset();
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS",
                            "CONTROL/PARENT/CLOSEDSM"));
    EXPECT_THAT(dsm.calls()[0].sent, ::testing::Each(0));
    EXPECT_EQ(dsm.calls()[0].sent.size(), sizeof(TW_USERINTERFACE));
}

TEST_F(TWAINHandlerTest, TakesDownOnlyWhatWasReached) {
    handler->OpenDSM();
    dsm.forgetCalls();
    handler.reset();
    EXPECT_THAT(dsm.names(), ElementsAre("CONTROL/PARENT/CLOSEDSM"));
}

TEST_F(TWAINHandlerTest, SendsNothingAtTheEndOfAnUnusedHandler) {
    handler.reset();
    EXPECT_THAT(dsm.calls(), IsEmpty());
}

} // namespace
} // namespace paperline

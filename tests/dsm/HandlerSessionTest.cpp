// The application's handler, its entry, a manager and a source, all real.
#include "TestPlaces.h"
#include "platform/places/Places.h"
#include "twain/TWAINHandler.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace paperline::test {
namespace {

int transfersReady = 0;

TW_UINT16
countReady(TW_IDENTITY*, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16 message, TW_MEMREF) {
    transfersReady += message == twain::MSG_XFERREADY ? 1 : 0;
    return twain::TWRC_SUCCESS;
}

class HandlerSession : public testing::TestWithParam<const char*> {
protected:
    HandlerSession() {
        places.addPlain("1beta.ds", OTHERMAKER_BETA);
        places.addPlain("2alpha.ds", OTHERMAKER_ALPHA);
        setBundlePath((places.folder() / "tree/Paperline.app").string());
        ::setenv("OTHERMAKER_DSM_SOURCES", places.plainSources().c_str(), 1);
        ::setenv("PAPERLINE_DSM", GetParam(), 1);
        transfersReady = 0;
    }
    TestPlaces places;
};

INSTANTIATE_TEST_SUITE_P(Managers,
                         HandlerSession,
                         testing::Values("", OTHERMAKER_MANAGER),
                         [](const auto& information) {
                             return *information.param == '\0' ? "Ours" : "OtherMakers";
                         });

TEST_P(HandlerSession, ScansTwoPagesInTheOrderThatTheApplicationUses) {
    TWAINHandler handler({TW_STR32::from("Hatsell"),
                          TW_STR32::from("PageCentral"),
                          TW_STR32::from("Roaming Leaf GATHER"),
                          TW_STR32::from("1.00")});
    ASSERT_EQ(handler.RegisterCallback(&countReady, 0), 0); // opens the manager
    TW_IDENTITY identity{};
    ASSERT_EQ(handler.GetIdentity(twain::MSG_GETFIRST, identity), 0);
    EXPECT_EQ(identity.ProductName.text(), "Beta");
    ASSERT_EQ(handler.GetIdentity(twain::MSG_GETNEXT, identity), 0);
    EXPECT_EQ(identity.ProductName.text(), "Alpha");
    EXPECT_EQ(handler.GetIdentity(twain::MSG_GETNEXT, identity), twain::TWRC_ENDOFLIST);
    for (int scan = 1; scan <= 2; ++scan) {
        ASSERT_EQ(handler.OpenDS(), 0);
        EXPECT_EQ(handler.OpenDS(), twain::TWRC_FAILURE); // it is open already
        TW_USERINTERFACE none{};
        ASSERT_EQ(handler.EnableDS(&none), 0);
        EXPECT_EQ(transfersReady, scan);
        TW_IMAGEINFO info{};
        EXPECT_EQ(handler.DSCall(twain::DG_IMAGE, twain::DAT_IMAGEINFO, twain::MSG_GET, &info), 0);
        EXPECT_EQ(info.ImageWidth, 20);
        TW_PENDINGXFERS pending{};
        for (const int left : {1, 0}) {
            EXPECT_EQ(handler.DSCall(
                          twain::DG_CONTROL, twain::DAT_PENDINGXFERS, twain::MSG_ENDXFER, &pending),
                      0);
            EXPECT_EQ(pending.Count, left);
        }
        EXPECT_EQ(handler.DisableDS(nullptr), 0);
        EXPECT_EQ(handler.CloseDS(), 0);
    }
    EXPECT_EQ(handler.CloseDSM(), 0);
    EXPECT_EQ(handler.CloseDSM(), -1);
}

TEST_P(HandlerSession, EndsWhatIsOpenWithTheHandler) {
    for (int run = 0; run < 2; ++run) { // the second one finds everything closed
        TWAINHandler handler({TW_STR32::from("Corvane"),
                              TW_STR32::from("PageCentral"),
                              TW_STR32::from("Corvane Paperline"),
                              TW_STR32::from("1.00")});
        TW_IDENTITY identity{};
        ASSERT_EQ(handler.GetIdentity(twain::MSG_GETDEFAULT, identity), 0);
        ASSERT_EQ(handler.OpenDS(), 0);
        TW_USERINTERFACE none{};
        ASSERT_EQ(handler.EnableDSUIOnly(&none), 0);
    }
}

TEST_P(HandlerSession, HasNoSelectionDialog) {
    TWAINHandler handler({});
    EXPECT_EQ(handler.UserSelect(), twain::TWRC_FAILURE);
    TW_STATUS status{};
    EXPECT_EQ(handler.DSMCall(twain::DG_CONTROL, twain::DAT_STATUS, twain::MSG_GET, &status), 0);
    EXPECT_EQ(status.ConditionCode, twain::TWCC_BADPROTOCOL);
}

} // namespace
} // namespace paperline::test

#include "tests/ui/InterfaceFixture.h"

namespace paperline {
namespace {

using Operation = void (AppDelegate::*)();

struct Message {
    Operation operation;
    const char* key;
};

class MessagesTest : public InterfaceFixture, public testing::WithParamInterface<Message> {};

TEST_P(MessagesTest, IsAnAlertTitledWithOneBlankThatSaysTheTextOfItsKey) {
    AppDelegate& made = start();
    gLanguageBundle = echoingBundle();
    (made.*GetParam().operation)();
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].title, " ");
    EXPECT_EQ(alerts[0].message, std::string("<") + GetParam().key + ">");
    EXPECT_EQ(alerts[0].informativeText, "");
    EXPECT_EQ(alerts[0].defaultButton, "");
}

INSTANTIATE_TEST_SUITE_P(
    AllMessages,
    MessagesTest,
    testing::Values(Message{&AppDelegate::showMemoryNotEnoughMessage, "ShowNoMem"},
                    Message{&AppDelegate::showNoDisplayImageMessage, "NoDisplayImage"},
                    Message{&AppDelegate::showNoDisplayImageCheckAgainMessage, "NoDisplayImage"},
                    Message{&AppDelegate::showNoImageSaveMessage, "NoSaveImage"},
                    Message{&AppDelegate::showNotCorrectFolderMessage, "NotCorrectFolder"},
                    Message{&AppDelegate::showNoEnoughDiskSpaceMessage, "NoEnoughDiskSpace"},
                    Message{&AppDelegate::showSourceNotOpenedMessage, "SourceNotOpened"}));

class NoDisplayImageTest : public InterfaceFixture {};

TEST_F(NoDisplayImageTest, IsShownOnceThroughBothEntryPointsTogether) {
    AppDelegate& made = start();
    made.showNoDisplayImageCheckAgainMessage();
    made.showNoDisplayImageMessage();
    made.showNoDisplayImageCheckAgainMessage();
    EXPECT_EQ(alerts.size(), 1u);
    EXPECT_EQ(gNoDisplayImageShown, 1);
}

TEST_F(NoDisplayImageTest, IsShownAgainWhenAScanClearedTheFlag) {
    AppDelegate& made = start();
    made.showNoDisplayImageMessage();
    gNoDisplayImageShown = 0;
    made.showNoDisplayImageMessage();
    EXPECT_EQ(alerts.size(), 2u);
}

TEST_F(NoDisplayImageTest, IsNeverShownWhileTheFlagHoldsTwo) {
    AppDelegate& made = start();
    gNoDisplayImageShown = 2;
    made.showNoDisplayImageMessage();
    EXPECT_TRUE(alerts.empty());
    EXPECT_EQ(gNoDisplayImageShown, 2);
}

TEST_F(NoDisplayImageTest, OtherMessagesComeEachTime) {
    AppDelegate& made = start();
    made.showNoImageSaveMessage();
    made.showNoImageSaveMessage();
    EXPECT_EQ(alerts.size(), 2u);
}

TEST_F(NoDisplayImageTest, DelayedMessagesWaitWhileAnAlertIsUp) {
    AppDelegate& made = start();
    bool held = false;
    setAlertPresenter([&held](const Alert&) {
        held = delayedMessagesAreHeld();
        return alertDefaultReturn;
    });
    made.showNoImageSaveMessage();
    EXPECT_TRUE(held);
    EXPECT_FALSE(delayedMessagesAreHeld());
}

} // namespace
} // namespace paperline

#include "platform/qt/AlertWindow.h"

#include "platform/desktop/MainLoop.h"

#include "QtTestSupport.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

namespace paperline {
namespace {

using namespace testing_support;

// Hands the alert's window to `look` as soon as it is there; `look` dismisses it.
void whenShown(std::function<void(QMessageBox&)> look) {
    QTimer::singleShot(10, [look = std::move(look)] {
        auto* window = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (window == nullptr) {
            whenShown(look);
            return;
        }
        look(*window);
    });
}

TEST(AlertWindow, ShowsItsTextsWithTheOneButton) {
    whenShown([](QMessageBox& window) {
        EXPECT_EQ(window.windowTitle(), QString::fromLatin1(" "));
        EXPECT_EQ(window.text(), QString::fromUtf8("<b>No room</b> f\xC3\xBCr /x & y"));
        EXPECT_EQ(window.textFormat(), Qt::PlainText);
        EXPECT_EQ(window.informativeText(), QString::fromLatin1("more"));
        EXPECT_EQ(window.buttons().size(), 1);
        EXPECT_EQ(window.defaultButton()->text(), QString::fromLatin1("Exit"));
        EXPECT_TRUE(window.isModal());
        window.defaultButton()->click();
    });
    EXPECT_EQ(runAlertWindow({" ", "<b>No room</b> f\xC3\xBCr /x & y", "more", "Exit"}),
              alertDefaultReturn);
}

TEST(AlertWindow, HasThePlatformsButtonWhenNoneIsNamed) {
    whenShown([](QMessageBox& window) {
        EXPECT_EQ(window.standardButtons(), QMessageBox::Ok);
        window.button(QMessageBox::Ok)->click();
    });
    EXPECT_EQ(runAlertWindow({"szWarning", "text", "", ""}), alertDefaultReturn);
}

TEST(AlertWindow, CanBeClosedWithoutTheButton) {
    whenShown([](QMessageBox& window) { window.close(); });
    EXPECT_EQ(runAlertWindow({" ", "text", "", "Exit"}), alertDefaultReturn);
}

TEST(AlertWindow, WritesToTheConsoleWhenTheApplicationEnds) {
    requestTermination();
    testing::internal::CaptureStderr();
    EXPECT_EQ(runAlertWindow({" ", "Pages are kept in", "/a/b", ""}), alertDefaultReturn);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "paperline: Pages are kept in /a/b\n");
    turnAWhile();
    resetTerminationRequest();
}

TEST(AlertWindow, LetsDelayedMessagesWait) {
    bool ran = false;
    performAfterDelay(0, [&ran] { ran = true; });
    whenShown([&ran](QMessageBox& window) {
        EXPECT_FALSE(ran);
        window.close();
    });
    runAlertWindow({" ", "text", "", ""});
    EXPECT_FALSE(ran);
    EXPECT_TRUE(turnUntil([&ran] { return ran; }));
}

TEST(AlertPanel, AsksWhoeverIsInstalled) {
    installAlertWindow();
    bool shown = false;
    whenShown([&shown](QMessageBox& window) {
        shown = true;
        window.close();
    });
    EXPECT_EQ(runAlertPanel({" ", "text", "", ""}), alertDefaultReturn);
    EXPECT_TRUE(shown);

    std::string recorded;
    setAlertPresenter([&recorded](const Alert& alert) {
        recorded = alert.message;
        return alertAlternateReturn;
    });
    EXPECT_EQ(runAlertPanel({" ", "recorded", "", ""}), alertAlternateReturn);
    EXPECT_EQ(recorded, "recorded");
}

TEST(AlertPanel, WritesToStandardErrorWhenNobodyIs) {
    setAlertPresenter({});
    testing::internal::CaptureStderr();
    EXPECT_EQ(runAlertPanel({"title", "message", "more", "Exit"}), alertDefaultReturn);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "message\nmore\n");
}

} // namespace
} // namespace paperline

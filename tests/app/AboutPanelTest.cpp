// The About command, and the small operations around it that no flow of the program calls.
#include "base/BrandProfile.h"
#include "controller/AppDelegate.h"
#include "platform/desktop/Alert.h"
#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/TestFolder.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

using namespace paperline;
using testing::Contains;
using testing::ElementsAre;

namespace {

constexpr double secondsOf16January2026 = 1768560000;
constexpr double secondsOfAYear = 366.0 * 86400;

// A bundle of version 9.8.7 of the test's own; the clock stands in January 2026.
class AboutPanelTest : public testing::Test {
protected:
    AboutPanelTest() {
        EXPECT_TRUE(createFolderWithParents(bundle_ + "/Contents/Resources"));
        EXPECT_TRUE(writePropertyListAtomically(bundle_ + "/Contents/Info.plist",
                                                {{"CFBundleShortVersionString", "9.8.7"}}));
        host().secondsSinceEpoch = [this] { return now_; };
        setAlertPresenter([this](const Alert& alert) {
            alerts_.push_back(alert);
            return answer_;
        });
        make(7);
    }
    ~AboutPanelTest() override {
        controller_.reset();
        setAlertPresenter({});
        host() = realHost();
    }

    void make(uint32_t brand) {
        gBrandNumber = brand;
        controller_ = std::make_unique<AppDelegate>();
        controller_->mCurrentPath = bundle_;
        controller_->mResourcePath = bundle_ + "/Contents/Resources";
        controller_->mVersionMinor = 14;
    }
    // The texts of the panel that the command opens, top down; the panel is closed.
    QStringList panelTexts() {
        QStringList texts;
        QTimer::singleShot(0, [&texts, this] {
            auto* panel = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(panel, nullptr);
            for (const QLabel* label : panel->findChildren<QLabel*>())
                texts.append(label->text());
            iconSize_ = panel->findChild<QLabel*>()->pixmap().deviceIndependentSize().toSize();
            panel->reject();
        });
        controller_->orderFrontStandardAboutPanel(nullptr);
        return texts;
    }

    const testing_support::TestFolder testFolder_;
    const std::string& root_ = testFolder_.path();
    std::string bundle_ = root_ + "/Paperline.app";
    double now_ = secondsOf16January2026;
    int answer_ = alertDefaultReturn;
    std::vector<Alert> alerts_;
    QSize iconSize_;
    std::unique_ptr<AppDelegate> controller_;
};

} // namespace

TEST_F(AboutPanelTest, IsAMessageWithNameVersionAndCopyright) {
    controller_->orderFrontStandardAboutPanel(nullptr);
    ASSERT_EQ(alerts_.size(), 1U);
    EXPECT_EQ(alerts_[0].message, "Roaming Leaf GATHER\n9.8.7");
    EXPECT_EQ(alerts_[0].informativeText, "Copyright (c) 2026 Hastell. All rights reserved");
    EXPECT_EQ(alerts_[0].defaultButton, "");
}

TEST_F(AboutPanelTest, FollowsTheClock) {
    now_ += secondsOfAYear;
    controller_->orderFrontStandardAboutPanel(nullptr);
    ASSERT_EQ(alerts_.size(), 1U);
    EXPECT_EQ(alerts_[0].informativeText, "Copyright (c) 2027 Hastell. All rights reserved");
}

TEST_F(AboutPanelTest, HasTheCalendarsYearAndNotTheWeeks) {
    now_ = 1798718400; // 31 December 2026, in the first week of 2027 by American weeks
    host().localeIdentifier = [] { return std::string("en_US"); };
    controller_->orderFrontStandardAboutPanel(nullptr);
    ASSERT_EQ(alerts_.size(), 1U);
    EXPECT_EQ(alerts_[0].informativeText, "Copyright (c) 2026 Hastell. All rights reserved");
}

TEST_F(AboutPanelTest, HasTheYearInAnyLocale) {
    for (const char* locale : {"ar_EG", "fa_IR", "th_TH", "ja_JP"}) {
        host().localeIdentifier = [locale] { return std::string(locale); };
        controller_->orderFrontStandardAboutPanel(nullptr);
        ASSERT_FALSE(alerts_.empty());
        EXPECT_EQ(alerts_.back().informativeText, "Copyright (c) 2026 Hastell. All rights reserved")
            << locale;
    }
}

TEST_F(AboutPanelTest, NamesTheBrand) {
    make(0);
    controller_->orderFrontStandardAboutPanel(nullptr);
    make(9);
    controller_->orderFrontStandardAboutPanel(nullptr);
    ASSERT_EQ(alerts_.size(), 2U);
    EXPECT_EQ(alerts_[0].message, "Paperline\n9.8.7");
    EXPECT_EQ(alerts_[0].informativeText, "Copyright (c) 2026. All rights reserved");
    EXPECT_EQ(alerts_[1].message, "Corvane Paperline\n9.8.7");
    EXPECT_EQ(alerts_[1].informativeText, "Copyright (c) 2026 Corvane. All rights reserved");
}

TEST_F(AboutPanelTest, IsTheStandardPanelOnOlderSystems) {
    QPixmap picture(256, 256);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(QString::fromStdString(bundle_ + "/Contents/Resources/CPL.png")));
    controller_->mVersionMinor = 13;
    EXPECT_EQ(panelTexts(),
              QStringList({"",
                           "Roaming Leaf GATHER",
                           "9.8.7",
                           "Copyright (c) 2026 Hastell. All rights reserved"}));
    EXPECT_EQ(iconSize_, QSize(128, 128));
    EXPECT_TRUE(alerts_.empty());
}

TEST_F(AboutPanelTest, ItsMessageAnswersNothingWhicheverButtonItWas) {
    for (const int answer : {alertDefaultReturn, alertAlternateReturn}) {
        answer_ = answer;
        EXPECT_EQ(controller_->input("message", "more"), nullptr);
    }
    answer_ = 7;
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_DEBUG_DEATH(EXPECT_EQ(controller_->input("message", "more"), nullptr),
                       "Invalid input dialog button 7");
}

TEST_F(AboutPanelTest, TheApplicationsFolderLiesInTheUsersData) {
    const char* data = std::getenv("XDG_DATA_HOME");
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(controller_->applicationFilesDirectory(), std::string(data) + "/Corvane.Paperline");
}

TEST_F(AboutPanelTest, TheMainWindowHasNoBorderAroundItsContent) {
    controller_->loadInterface();
    controller_->paperlineWindow->setContentsMargins(5, 5, 5, 5);
    controller_->windowDidLoad();
    EXPECT_EQ(controller_->paperlineWindow->contentsMargins(), QMargins());
}

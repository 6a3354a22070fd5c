// How the main window looks: room, contrast, alignment.
#include "platform/files/Files.h"
#include "tests/ui/InterfaceFixture.h"
#include "ui/EmptyState.h"
#include "ui/LanguageTable.h"
#include "ui/MainToolbar.h"
#include "ui/PaneFocusRing.h"
#include "ui/Theme.h"
#include "viewer/Colours.h"

#include <QImage>
#include <QToolButton>

#include <algorithm>
#include <functional>
#include <utility>

namespace paperline {
namespace {

class WindowLooksTest : public InterfaceFixture {
protected:
    QWidget* button(QAction* action) { return toolbarButton(controller->paperlineToolbar, action); }
    static QImage pictureOf(QWidget* widget) {
        return widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    // The window as the active one, in the platform's colours and in dark ones.
    void lookInLightAndDark(const std::function<void()>& look) {
        const QPalette platform = QApplication::palette();
        start();
        window().show();
        QApplication::setActiveWindow(&window());
        for (const QPalette& colours : {platform, darkPalette(platform)}) {
            QApplication::setPalette(withReadableSelection(colours));
            look();
        }
        QApplication::setPalette(platform);
    }
};

TEST_F(WindowLooksTest, NothingIsElidedAtItsDesignedSize) {
    for (const LanguageRow& row : languageTable) {
        start(7, static_cast<int32_t>(&row - languageTable.data()));
        window().show();
        QApplication::processEvents();
        for (const QToolButton* item : window().findChildren<QToolButton*>()) {
            if (!item->isVisible())
                continue;
            EXPECT_GE(item->width(), item->sizeHint().width())
                << row.menuName << ": " << item->text().toStdString();
        }
        EXPECT_EQ(button(controller->paperlineToolbar_ActualPage)->isVisible(), true);
    }
}

// Of what is written where, in the colours of the palette in force. The ground of pages is grey in
// every palette, but nothing is written on it.
double worstContrast(const QWidget& window, const QWidget* groundOfPages) {
    double worst = 21;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (widget == groundOfPages || groundOfPages->isAncestorOf(widget))
            continue;
        const QPalette& colours = widget->palette();
        for (const auto& [text, ground] :
             {std::pair(QPalette::WindowText, QPalette::Window),
              std::pair(QPalette::Text, QPalette::Base),
              std::pair(QPalette::ButtonText, QPalette::Button),
              std::pair(QPalette::HighlightedText, QPalette::Highlight),
              std::pair(QPalette::ToolTipText, QPalette::ToolTipBase)}) {
            for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
                worst = std::min(
                    worst, contrastRatio(colours.color(group, text), colours.color(group, ground)));
        }
    }
    return worst;
}

TEST_F(WindowLooksTest, TextsCanBeReadInLightAndDarkColours) {
    const QPalette platform = QApplication::palette();
    start();
    for (const QPalette& colours :
         {withReadableSelection(platform), withReadableSelection(darkPalette(platform))}) {
        QApplication::setPalette(colours);
        window().show();
        QApplication::processEvents();
        EXPECT_GE(worstContrast(window(), controller->showImageScrollView->viewport()),
                  readableContrast);
    }
    QApplication::setPalette(platform);
}

TEST_F(WindowLooksTest, TheEmptyPageAreasPictureTakesTheColoursInForce) {
    const QPalette platform = QApplication::palette();
    start();
    window().show();
    QApplication::processEvents();
    const QLabel* picture = window().findChild<EmptyState*>()->findChildren<QLabel*>().first();
    const QImage light = picture->pixmap().toImage();
    ASSERT_FALSE(light.isNull());
    QApplication::setPalette(darkPalette(platform));
    QApplication::processEvents();
    EXPECT_NE(picture->pixmap().toImage(), light);
    QApplication::setPalette(platform);
    QApplication::processEvents();
    EXPECT_EQ(picture->pixmap().toImage(), light);
}

TEST_F(WindowLooksTest, TheDesktopsWishForDarkColoursIsFollowed) {
    const QPalette platform = QApplication::palette();
    ASSERT_FALSE(isDark(platform));
    for (const auto& [wish, dark] : {std::pair("dark", true), std::pair("light", false)}) {
        qputenv("PAPERLINE_COLOUR_SCHEME", wish);
        start();
        EXPECT_EQ(isDark(window().palette()), dark) << wish;
        controller.reset();
        QApplication::setPalette(platform);
    }
    // A platform that is dark by itself keeps its own colours.
    QPalette night = darkPalette(platform);
    night.setColor(QPalette::Window, QColor(10, 20, 30));
    QApplication::setPalette(night);
    qputenv("PAPERLINE_COLOUR_SCHEME", "dark");
    start();
    EXPECT_EQ(window().palette().color(QPalette::Window), QColor(10, 20, 30));
    qunsetenv("PAPERLINE_COLOUR_SCHEME");
    QApplication::setPalette(platform);
}

TEST_F(WindowLooksTest, TheScanButtonIsEvenInBothDirections) {
    for (const int32_t language : {0, 26}) {
        start(7, language);
        window().show();
        QApplication::processEvents();
        QWidget* scan = button(controller->paperlineToolbar_Scan);
        const QImage picture = pictureOf(scan);
        const QColor ground = picture.pixelColor(picture.width() / 2, 3);
        int first = picture.width(), last = 0;
        for (int y = 3; y < picture.height() - 3; ++y) {
            for (int x = 6; x < picture.width() - 6; ++x) {
                if (contrastRatio(picture.pixelColor(x, y), ground) < 2)
                    continue;
                first = std::min(first, x);
                last = std::max(last, x);
            }
        }
        EXPECT_NEAR(first, picture.width() - 1 - last, 4) << language;
    }
}

TEST_F(WindowLooksTest, TheFirstHintStandsOnEvenLines) {
    for (const LanguageRow& row : languageTable) {
        start(7, static_cast<int32_t>(&row - languageTable.data()));
        window().show();
        QApplication::processEvents();
        const QLabel* hint = window().findChild<EmptyState*>()->findChildren<QLabel*>().last();
        EXPECT_LE(hint->heightForWidth(hint->width()), hint->height()) << row.menuName;
        const int lines = hint->height() / hint->fontMetrics().lineSpacing();
        EXPECT_LE(lines, 2) << row.menuName;
        const int wholeWidth = hint->fontMetrics().horizontalAdvance(hint->text());
        EXPECT_TRUE(lines == 1 || hint->width() < wholeWidth * 3 / 4) << row.menuName;
    }
}

TEST_F(WindowLooksTest, APaneThatIsReachedWithTabHasARingThatShows) {
    lookInLightAndDark([this] {
        for (const bool empty : {true, false}) {
            controller->cellInfos.resize(empty ? 0 : 1);
            controller->showPageCount();
            for (QWidget* pane : std::initializer_list<QWidget*>{controller->_tableViewMain,
                                                                 controller->showImageScrollView}) {
                controller->currentSaveFolder->setFocus();
                QApplication::processEvents();
                const QImage before = pictureOf(pane);
                pane->setFocus(Qt::MouseFocusReason);
                QApplication::processEvents();
                EXPECT_EQ(pictureOf(pane), before); // a click needs no ring
                controller->currentSaveFolder->setFocus();
                pane->setFocus(Qt::TabFocusReason);
                QApplication::processEvents();
                const QImage after = pictureOf(pane);
                const int middle = after.height() / 2;
                int crossed = 0;
                for (int x = 0; x < after.width(); ++x)
                    crossed += contrastRatio(after.pixelColor(x, middle),
                                             before.pixelColor(x, middle)) >= 3;
                EXPECT_GE(crossed, 2) << pane->objectName().toStdString();
                EXPECT_LE(crossed, 6) << pane->objectName().toStdString();
                controller->currentSaveFolder->setFocus();
                QApplication::processEvents();
                EXPECT_EQ(pictureOf(pane), before);
            }
        }
    });
}

TEST_F(WindowLooksTest, ThePanesRingLiesBesideTheirScrollers) {
    AppDelegate& made = start();
    window().show();
    QApplication::setActiveWindow(&window());
    for (QAbstractScrollArea* pane : std::initializer_list<QAbstractScrollArea*>{
             made._tableViewMain, made.showImageScrollView}) {
        made.currentSaveFolder->setFocus();
        pane->setFocus(Qt::TabFocusReason);
        const auto* ring = pane->findChild<PaneFocusRing*>();
        ASSERT_TRUE(ring->isVisible());
        pane->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        window().resize(1100, 700);
        QApplication::processEvents();
        EXPECT_EQ(ring->geometry(), pane->viewport()->geometry());
        EXPECT_LT(ring->width(), pane->width());
    }
    removePath(userDataFolder() + "/window.ini");
}

TEST_F(WindowLooksTest, AButtonWithTheFocusHasARingThatShows) {
    lookInLightAndDark([this] {
        for (QAction* item : {controller->paperlineToolbar_Setup,
                              controller->paperlineToolbar_Scan,
                              controller->paperlineToolbar_FitPage}) {
            QWidget* focused = button(item);
            controller->_tableViewMain->setFocus();
            QApplication::processEvents();
            const QImage before = pictureOf(focused);
            focused->setFocus(Qt::TabFocusReason);
            QApplication::processEvents();
            const QImage after = pictureOf(focused);
            // Straight down the middle the ring is crossed at the top and at the bottom.
            int crossed = 0;
            for (int y = 0; y < after.height(); ++y) {
                const QColor ring = after.pixelColor(after.width() / 2, y);
                const QColor was = before.pixelColor(after.width() / 2, y);
                crossed += contrastRatio(ring, was) >= 3 ? 1 : 0;
            }
            EXPECT_GE(crossed, 2) << item->text().toStdString();
        }
    });
}

} // namespace
} // namespace paperline

#include "ui/ThemedIcon.h"
#include "viewer/Colours.h"

#include "tests/support/TestFolder.h"

#include <QApplication>
#include <QImage>
#include <QPalette>

#include <gtest/gtest.h>

#include <cstdlib>

namespace paperline {
namespace {

TEST(ContrastRatio, RunsFromOneToTwentyOne) {
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::black, Qt::white), 21.0);
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::white, Qt::black), 21.0);
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::red, Qt::red), 1.0);
    EXPECT_NEAR(contrastRatio(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.01);
}

TEST(ReadableBackground, IsAsFarFromTheTextAsReadingNeeds) {
    for (const QColor& ground : {QColor(0x30, 0x8c, 0xc6), QColor(Qt::yellow), QColor(Qt::white)})
        EXPECT_GE(contrastRatio(readableBackground(ground, Qt::white), Qt::white), 4.5);
    for (const QColor& ground : {QColor(0x30, 0x30, 0x60), QColor(Qt::black), QColor(Qt::blue)})
        EXPECT_GE(contrastRatio(readableBackground(ground, Qt::black), Qt::black), 4.5);
}

TEST(ReadableBackground, StaysWhenItIsReadableAlready) {
    EXPECT_EQ(readableBackground(QColor(0x10, 0x20, 0x80), Qt::white), QColor(0x10, 0x20, 0x80));
}

class ThemedIconTest : public testing::Test {
protected:
    void SetUp() override { before_ = QApplication::palette(); }
    void TearDown() override { QApplication::setPalette(before_); }
    // Left half grey, right half blue.
    std::string write(const std::string& name, int side) const {
        QImage picture(side, side, QImage::Format_ARGB32);
        picture.fill(QColor(0x40, 0x40, 0x40));
        for (int y = 0; y < side; ++y)
            for (int x = side / 2; x < side; ++x)
                picture.setPixelColor(x, y, QColor(0x2e, 0x7f, 0xd6));
        EXPECT_TRUE(picture.save(QString::fromStdString(folder_ + "/" + name)));
        return folder_ + "/" + name;
    }
    static void setText(const QColor& colour) {
        QPalette palette = QApplication::palette();
        palette.setColor(QPalette::ButtonText, colour);
        QApplication::setPalette(palette);
    }

    const testing_support::TestFolder testFolder_;
    const std::string& folder_ = testFolder_.path();
    QPalette before_;
};

TEST_F(ThemedIconTest, GreyStrokesTakeTheTextsColourAndColouredOnesKeepTheirs) {
    const QIcon icon = themedIcon(write("a.png", 8));
    for (const QColor& text : {QColor(Qt::white), QColor(0x20, 0x10, 0x10)}) {
        setText(text);
        const QImage picture = icon.pixmap(QSize(8, 8), 1.0).toImage();
        EXPECT_EQ(picture.pixelColor(1, 1), text);
        EXPECT_EQ(picture.pixelColor(6, 1), QColor(0x2e, 0x7f, 0xd6));
    }
}

TEST_F(ThemedIconTest, FineScreensGetTheFinePicture) {
    const std::string path = write("b.png", 8);
    QImage fine(16, 16, QImage::Format_ARGB32);
    fine.fill(QColor(Qt::red));
    ASSERT_TRUE(fine.save(QString::fromStdString(folder_ + "/b@2x.png")));
    const QIcon icon = themedIcon(path);
    EXPECT_NE(icon.pixmap(QSize(8, 8), 1.0).toImage().pixelColor(6, 1), QColor(Qt::red));
    const QPixmap doubled = icon.pixmap(QSize(8, 8), 2.0);
    EXPECT_EQ(doubled.size(), QSize(16, 16));
    EXPECT_EQ(doubled.toImage().pixelColor(6, 1), QColor(Qt::red));
}

TEST_F(ThemedIconTest, DisabledStrokesFade) {
    const QIcon icon = themedIcon(write("c.png", 8));
    const QImage picture = icon.pixmap(QSize(8, 8), 1.0, QIcon::Disabled).toImage();
    EXPECT_LT(picture.pixelColor(6, 1).alpha(), 255);
}

TEST_F(ThemedIconTest, IsNullWithoutItsFile) {
    EXPECT_TRUE(themedIcon(folder_ + "/none.png").isNull());
}

} // namespace
} // namespace paperline

#include "viewer/CustomCell.h"

#include "ViewerTestFiles.h"
#include "tests/support/TraceRecording.h"
#include "viewer/CellGeometry.h"
#include "viewer/PageListModel.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QStyleOptionViewItem>

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

namespace paperline {
namespace {

constexpr int cellWidth = 215;

class CustomCellTest : public ::testing::Test {
protected:
    CustomCellTest() : model_(&rows_, [this] { return static_cast<uint32_t>(rows_.size()); }) {}

    // One row whose page has the given size, with a thumbnail of one colour.
    void addRow(const std::string& name, int width, int height, const std::string& caption) {
        const std::string path = folder_.file(name);
        ASSERT_TRUE(quarters(width, height).save(QString::fromStdString(path)));
        QImage thumbnail(64, 64, QImage::Format_RGB888);
        thumbnail.fill(Qt::red);
        rows_.push_back({{}, caption, thumbnail, path, 0});
        model_.reload();
    }

    QImage draw(int row, bool selected = false, int height = 200) {
        QImage image(cellWidth, height, QImage::Format_RGB32);
        image.fill(Qt::magenta);
        QPainter painter(&image);
        painter.setLayoutDirection(direction_);
        QStyleOptionViewItem option;
        option.direction = direction_;
        option.rect = image.rect();
        option.font = QApplication::font();
        option.palette = QPalette(
            Qt::black, Qt::lightGray, Qt::white, Qt::black, Qt::gray, Qt::black, Qt::white);
        option.palette.setColor(QPalette::Highlight, QColor(0x30, 0x8C, 0xC6));
        option.state = QStyle::State_Enabled | QStyle::State_Active;
        if (selected)
            option.state |= QStyle::State_Selected;
        cell_.paint(&painter, option, model_.index(row, 0));
        return image;
    }

    static QRect areaOf(const QImage& image, const QColor& colour) {
        QRect area;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == colour)
                    area |= QRect(x, y, 1, 1);
        return area;
    }

    // What is neither paper nor thumbnail nor the thumbnail's edge.
    static QRect textArea(const QImage& image, int below) {
        const QColor paper = image.pixelColor(8, image.height() - 8);
        QRect area;
        for (int y = below; y < image.height() - 4; ++y)
            for (int x = 6; x < image.width() - 6; ++x)
                if (image.pixelColor(x, y) != paper)
                    area |= QRect(x, y, 1, 1);
        return area;
    }

    Qt::LayoutDirection direction_ = Qt::LeftToRight;
    TemporaryFolder folder_;
    std::vector<CellInfo> rows_;
    PageListModel model_;
    CustomCell cell_;
};

TEST_F(CustomCellTest, DrawsALandscapeThumbnailAtItsRectangle) {
    addRow("a.png", 300, 200, "Image_00001");
    const QRect area = areaOf(draw(0), Qt::red);
    // 123 x 2 / 3 = 82 high, 5 + (200 - 82) / 2 = 64 down
    EXPECT_EQ(area, QRect(45, 64, 128, 82));
}

TEST_F(CustomCellTest, AFineEdgeSetsAWhitePageApartFromThePaper) {
    addRow("a.png", 300, 200, "");
    rows_[0].image.fill(Qt::white);
    const QImage image = draw(0);
    for (const QPoint outside :
         {QPoint(44, 100), QPoint(173, 100), QPoint(100, 63), QPoint(100, 146)})
        EXPECT_LT(image.pixelColor(outside).lightness(), 240) << outside.x() << ", " << outside.y();
    EXPECT_EQ(image.pixelColor(43, 100), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(45, 100), QColor(Qt::white));
}

TEST_F(CustomCellTest, DrawsAPortraitThumbnailAtItsRectangle) {
    addRow("a.png", 200, 300, "Image_00001");
    const QRect area = areaOf(draw(0), Qt::red);
    // 82 wide, 5 + (215 - 82) / 2 = 71.5 across
    EXPECT_NEAR(area.left(), 71.5, 1);
    EXPECT_NEAR(area.right() + 1, 153.5, 1);
    EXPECT_EQ(area.top(), 25);
    EXPECT_EQ(area.height(), 123);
}

TEST_F(CustomCellTest, PortraitAndLandscapeOfOneSizeDiffer) {
    addRow("a.png", 200, 300, "a");
    addRow("b.png", 300, 200, "b");
    EXPECT_EQ(areaOf(draw(0), Qt::red).height(), 123);
    EXPECT_EQ(areaOf(draw(1), Qt::red).width(), 128);
}

TEST_F(CustomCellTest, TheThumbnailsPlaceFollowsTheFileOnDisk) {
    addRow("a.png", 300, 200, "a");
    EXPECT_EQ(areaOf(draw(0), Qt::red).size(), QSize(128, 82));
    ASSERT_TRUE(quarters(100, 300).save(QString::fromStdString(folder_.file("a.png"))));
    EXPECT_EQ(areaOf(draw(0), Qt::red).size(), QSize(41, 123));
    std::filesystem::remove(folder_.file("a.png"));
    EXPECT_TRUE(areaOf(draw(0), Qt::red).isEmpty());
}

TEST_F(CustomCellTest, WithoutAnImageTheRectangleIsGrey) {
    addRow("a.png", 300, 200, "");
    rows_[0].image = {};
    EXPECT_EQ(areaOf(draw(0), QColor(128, 128, 128)), QRect(45, 64, 128, 82));
}

TEST_F(CustomCellTest, TheCaptionStartsWhereItsLengthSays) {
    addRow("a.png", 300, 200, std::string(20, 'H'));
    addRow("b.png", 300, 200, std::string(10, 'H'));
    const double lineHeight = QFontMetricsF(QApplication::font()).height();
    const QRect twenty = textArea(draw(0), 150), ten = textArea(draw(1), 150);
    EXPECT_NEAR(twenty.left(), 46, 3);
    EXPECT_NEAR(ten.left(), 46 + 30, 3);
    EXPECT_GE(twenty.top(), 5 + lineHeight + 5 + 128 - 1);
    EXPECT_LE(twenty.bottom(), 5 + lineHeight + 5 + 128 + lineHeight);
}

TEST_F(CustomCellTest, ACaptionOfTwentyOneCharactersIsDrawnNowhere) {
    addRow("a.png", 300, 200, std::string(21, 'H'));
    EXPECT_TRUE(textArea(draw(0), 150).isEmpty());
}

TEST_F(CustomCellTest, CharactersAreCountedAsTheCaptionsTextHasThem) {
    addRow("a.png", 300, 200, "Überprüfung_größer_01"); // 21, more bytes
    addRow("b.png", 300, 200, "Prüfung_größer_00001");  // 20
    EXPECT_TRUE(textArea(draw(0), 150).isEmpty());
    EXPECT_NEAR(textArea(draw(1), 150).left(), 46, 3);
}

TEST_F(CustomCellTest, ARightToLeftInterfaceChangesNoPlace) {
    addRow("a.png", 300, 200, "HHHHHHHHHH");
    const QImage leftToRight = draw(0);
    direction_ = Qt::RightToLeft;
    EXPECT_EQ(draw(0), leftToRight);
}

TEST_F(CustomCellTest, ATallThumbnailPushesTheCaptionDown) {
    addRow("a.png", 300, 300, "HHHHHHHHHHHHHHHHHHHH");
    const double lineHeight = QFontMetricsF(QApplication::font()).height();
    const int rowHeight = CustomCell::rowHeight(QApplication::font());
    const QImage image = draw(0, false, rowHeight);
    const QRect square = areaOf(image, Qt::red);
    const QRect caption = textArea(image, square.bottom() + 3);
    EXPECT_GE(caption.top(), 5 + lineHeight + 5 + 146 - 1);
    EXPECT_LT(caption.bottom(), rowHeight - 4);
}

TEST_F(CustomCellTest, CaptionsCanBeReadOnEveryBackground) {
    const auto luminance = [](const QColor& colour) {
        const auto linear = [](double value) {
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.red() / 255.0) + 0.7152 * linear(colour.green() / 255.0) +
               0.0722 * linear(colour.blue() / 255.0);
    };
    const auto contrast = [&](const QColor& a, const QColor& b) {
        const double x = luminance(a) + 0.05, y = luminance(b) + 0.05;
        return std::max(x, y) / std::min(x, y);
    };
    for (const QColor paper : {QColor(Qt::white),
                               QColor(0x31, 0x31, 0x31),
                               QColor(Qt::black),
                               QColor(0xEF, 0xF0, 0xF1)}) {
        const QColor caption = CustomCell::captionColour(false, paper);
        EXPECT_GE(contrast(caption, paper), 4.5) << paper.name().toStdString();
        EXPECT_EQ(caption.hsvSaturation(), 0);
    }
    for (const QColor highlight : {QColor(0x30, 0x8C, 0xC6),
                                   QColor(0x3D, 0xAE, 0xE9),
                                   QColor(Qt::yellow),
                                   QColor(Qt::darkBlue)}) {
        const QColor background = CustomCell::highlightColour(highlight);
        const QColor caption = CustomCell::captionColour(true, background);
        EXPECT_GE(contrast(caption, background), 4.5) << highlight.name().toStdString();
        EXPECT_GE(caption.lightness(), 170); // light grey
    }
}

TEST_F(CustomCellTest, ASelectedRowIsFilledAndItsCaptionLight) {
    addRow("a.png", 300, 200, "HHHHHHHHHHHHHHHHHHHH");
    const QImage image = draw(0, true);
    const QColor background = CustomCell::highlightColour(QColor(0x30, 0x8C, 0xC6));
    EXPECT_EQ(image.pixelColor(20, 100).rgb(), background.rgb());
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::white)); // around the rounded row
    const QColor caption = CustomCell::captionColour(true, background);
    EXPECT_FALSE(areaOf(image, caption).intersected(QRect(0, 150, cellWidth, 50)).isEmpty());
}

TEST_F(CustomCellTest, ACopyCarriesTheSameValuesAndSharesTheImage) {
    cell_.setImage(quarters(8, 8));
    cell_.setTitle("title");
    cell_.setSubtitle("subtitle");
    cell_.setImagePath("/a/b.tif");
    cell_.setImageIndex(3);
    const std::unique_ptr<CustomCell> copy = cell_.copy();
    EXPECT_EQ(copy->image().cacheKey(), cell_.image().cacheKey());
    EXPECT_EQ(copy->title(), "title");
    EXPECT_EQ(copy->subtitle(), "subtitle");
    EXPECT_EQ(copy->imagePath(), "/a/b.tif");
    EXPECT_EQ(copy->imageIndex(), 3);
    cell_.setSubtitle("other");
    EXPECT_EQ(copy->subtitle(), "subtitle");
}

TEST_F(CustomCellTest, ARecordsCopySharesItsImage) {
    const CellInfo row{"", "a", quarters(8, 8), "/a.bmp", 2};
    const CellInfo copy = row;
    EXPECT_EQ(copy.image.cacheKey(), row.image.cacheKey());
    EXPECT_EQ(copy.imageIndex, 2);
}

TEST_F(CustomCellTest, TheTitleRectangleHasNoWidth) {
    addRow("a.png", 300, 200, "a");
    draw(0);
    cell_.setTitle("a title that is never drawn");
    const Rect rect = cell_.titleRectForBounds({10, 20, 215, 200});
    EXPECT_EQ(rect.x, 148);
    EXPECT_EQ(rect.y, 25);
    EXPECT_EQ(rect.width, 0);
    EXPECT_GT(rect.height, 5);
}

TEST_F(CustomCellTest, AsksForItsContentBeforeEachRow) {
    addRow("a.png", 300, 200, "a");
    std::vector<int> asked;
    cell_.setWillDisplayCell([&](int row) {
        asked.push_back(row);
        cell_.setImagePath(folder_.file("a.png"));
        cell_.setImage({});
    });
    EXPECT_FALSE(areaOf(draw(0), QColor(128, 128, 128)).isEmpty());
    EXPECT_EQ(asked, std::vector<int>{0});
}

TEST_F(CustomCellTest, TheCaptionIsGreyOrLightGreyAndNothingWithoutASubtitle) {
    EXPECT_FALSE(cell_.attributedSubtitleValue(false, Qt::black));
    cell_.setSubtitle("Scan(2)");
    const auto plain = cell_.attributedSubtitleValue(false, Qt::black);
    ASSERT_TRUE(plain.has_value());
    EXPECT_EQ(plain->text, "Scan(2)");
    EXPECT_EQ(plain->foreground, QColor(128, 128, 128));
    const auto highlighted = cell_.attributedSubtitleValue(true, Qt::black);
    ASSERT_TRUE(highlighted.has_value());
    EXPECT_EQ(highlighted->foreground, QColor(211, 211, 211));
}

TEST_F(CustomCellTest, TracesItsOperations) {
    addRow("a.png", 300, 200, "a");
    const testing_support::TraceRecording trace;
    draw(0);
    EXPECT_EQ(trace.entries(),
              (std::vector<std::string>{"In  1: drawInteriorWithFrame",
                                        "In  1: imageRectForBounds",
                                        "Out 1: imageRectForBounds",
                                        "In  1: titleRectForBounds",
                                        "Out 1: titleRectForBounds",
                                        "In  1: subtitleRectForBounds",
                                        "Out 1: subtitleRectForBounds",
                                        "In  1: attributedSubtitleValue",
                                        "Out 1: attributedSubtitleValue",
                                        "Out 1: drawInteriorWithFrame"}));
}

} // namespace
} // namespace paperline

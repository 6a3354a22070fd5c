#include "viewer/GifPage.h"

#include "ViewerTestFiles.h"
#include "viewer/PageLoader.h"
#include "viewer/PixelConversion.h"

#include <gif_lib.h>
#include <gtest/gtest.h>

#include <QImageReader>

#include <cstdlib>
#include <functional>
#include <random>

namespace paperline {
namespace {

using Place = std::function<unsigned(int x, int y)>;

// A GIF of one picture; the library writes it.
struct Sketch {
    QRect picture;
    QSize screen;
    int colours = 256; // a power of two
    bool grey = false;
    bool localPalette = false;
    bool interlaced = false;
    int transparent = -1;
    int disposal = 0;
    bool comment = false;
    Place place = [](int x, int y) { return static_cast<unsigned>(x * 7 + y * 13 + x * y / 9); };
};

Sketch sketch(int width, int height) {
    Sketch made;
    made.picture = QRect(0, 0, width, height);
    made.screen = made.picture.size();
    return made;
}

ColorMapObject* palette(const Sketch& wanted) {
    ColorMapObject* map = GifMakeMapObject(wanted.colours, nullptr);
    for (int place = 0; place < wanted.colours; ++place) {
        const auto level = static_cast<GifByteType>(place * 255 / (wanted.colours - 1));
        map->Colors[place] = wanted.grey
                                 ? GifColorType{level, level, level}
                                 : GifColorType{level, static_cast<GifByteType>(place * 37), 200};
    }
    return map;
}

std::vector<int> rowOrder(const Sketch& wanted) {
    std::vector<int> order;
    const auto take = [&](int first, int step) {
        for (int y = first; y < wanted.picture.height(); y += step)
            order.push_back(y);
    };
    if (!wanted.interlaced)
        take(0, 1);
    else
        for (const auto& [first, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
            take(first, step);
    return order;
}

void putExtensions(GifFileType* gif, const Sketch& wanted) {
    if (wanted.comment) {
        EXPECT_EQ(EGifPutComment(gif, "a page"), GIF_OK);
    }
    if (wanted.transparent < 0 && wanted.disposal == 0)
        return;
    const GraphicsControlBlock control{wanted.disposal, false, 0, wanted.transparent};
    Bytes extension(4);
    EXPECT_EQ(EGifGCBToExtension(&control, extension.data()), 4U);
    EXPECT_EQ(EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, extension.data()), GIF_OK);
}

Bytes gifFile(const Sketch& wanted) {
    Bytes file;
    const auto append = [](GifFileType* gif, const GifByteType* bytes, int count) {
        auto& target = *static_cast<Bytes*>(gif->UserData);
        target.insert(target.end(), bytes, bytes + count);
        return count;
    };
    GifFileType* gif = EGifOpen(&file, append, nullptr);
    EGifSetGifVersion(gif, true);
    ColorMapObject* map = palette(wanted);
    ColorMapObject* forScreen = wanted.localPalette ? nullptr : map;
    EXPECT_EQ(
        EGifPutScreenDesc(gif, wanted.screen.width(), wanted.screen.height(), 8, 1, forScreen),
        GIF_OK);
    putExtensions(gif, wanted);
    EXPECT_EQ(EGifPutImageDesc(gif,
                               wanted.picture.x(),
                               wanted.picture.y(),
                               wanted.picture.width(),
                               wanted.picture.height(),
                               wanted.interlaced,
                               wanted.localPalette ? map : nullptr),
              GIF_OK);
    Bytes row(static_cast<size_t>(wanted.picture.width()));
    for (const int y : rowOrder(wanted)) {
        for (size_t x = 0; x < row.size(); ++x)
            row[x] = static_cast<uint8_t>(wanted.place(static_cast<int>(x), y) %
                                          static_cast<unsigned>(wanted.colours));
        EXPECT_EQ(EGifPutLine(gif, row.data(), wanted.picture.width()), GIF_OK);
    }
    GifFreeMapObject(map);
    EXPECT_EQ(EGifCloseFile(gif, nullptr), GIF_OK);
    return file;
}

Place noise(unsigned seed) {
    return
        [random = std::mt19937(seed)](int, int) mutable { return static_cast<unsigned>(random()); };
}

class GifPage : public ::testing::Test {
protected:
    QImage read(const Bytes& file) {
        writeBytes(path(), file);
        return readGif(path());
    }
    // As another reader shows it.
    QImage shown() const {
        QImageReader reader(QString::fromStdString(path()), "gif");
        return opaqueImage(reader.read());
    }
    void expectAsShown(const std::string& what) {
        const QImage image = readGif(path());
        ASSERT_FALSE(image.isNull()) << what;
        EXPECT_EQ(image.convertToFormat(QImage::Format_RGB32), shown()) << what;
    }
    void expectAsShown(const Sketch& wanted, const std::string& what) {
        writeBytes(path(), gifFile(wanted));
        expectAsShown(what);
    }
    std::string path() const { return folder_.file("page.gif"); }

    TemporaryFolder folder_;
};

TEST_F(GifPage, IsShownAsOthersShowItInEverySize) {
    for (const auto& [width, height] :
         {std::pair{1, 1}, {1, 65000}, {65000, 1}, {3, 7}, {97, 301}, {640, 480}, {2, 64}})
        for (const bool interlaced : {false, true}) {
            Sketch wanted = sketch(width, height);
            wanted.interlaced = interlaced && height > 4;
            expectAsShown(wanted, std::to_string(width) + " x " + std::to_string(height));
        }
}

TEST_F(GifPage, InterlacedRowsOfEveryHeight) {
    for (int height = 5; height <= 34; ++height) {
        Sketch wanted = sketch(5, height);
        wanted.interlaced = true;
        expectAsShown(wanted, std::to_string(height));
    }
}

TEST_F(GifPage, PalettesOfEverySize) {
    for (int colours = 2; colours <= 256; colours *= 2)
        for (const bool local : {false, true})
            for (const bool isNoise : {false, true}) {
                Sketch wanted = sketch(211, 190);
                wanted.colours = colours;
                wanted.localPalette = local;
                if (isNoise)
                    wanted.place = noise(5);
                expectAsShown(wanted, std::to_string(colours));
            }
}

// Strings as long as the table allows, each the one before with its own first pixel.
TEST_F(GifPage, PlainPages) {
    Sketch plain = sketch(2750, 2750);
    plain.place = [](int, int) { return 255U; };
    expectAsShown(plain, "plain");
    for (const int stripe : {1, 2, 7, 16, 17, 33}) {
        Sketch wanted = sketch(331, 200);
        wanted.place = [stripe](int x, int) { return static_cast<unsigned>(x / stripe % 2); };
        expectAsShown(wanted, std::to_string(stripe));
    }
}

TEST_F(GifPage, PicturesThatDoNotFillTheirScreen) {
    for (const int transparent : {-1, 0, 3, 255})
        for (const QRect& place : {QRect(0, 0, 30, 20),
                                   QRect(7, 0, 33, 30),
                                   QRect(0, 11, 40, 19),
                                   QRect(39, 29, 1, 1)}) {
            Sketch wanted = sketch(40, 30);
            wanted.picture = place;
            wanted.transparent = transparent;
            expectAsShown(wanted, std::to_string(transparent));
            wanted.localPalette = true;
            expectAsShown(wanted, "own palette");
        }
}

TEST_F(GifPage, TransparencyIsSeenOnWhite) {
    Sketch wanted = sketch(40, 30);
    wanted.transparent = 9;
    wanted.place = [](int x, int) { return x < 20 ? 9U : 10U; };
    const QImage image = read(gifFile(wanted));
    EXPECT_EQ(image.pixelColor(19, 5), QColor(Qt::white));
    EXPECT_NE(image.pixelColor(20, 5), QColor(Qt::white));
    for (const int disposal : {0, 1, 2, 3}) {
        wanted.disposal = disposal;
        wanted.comment = true;
        expectAsShown(wanted, std::to_string(disposal));
    }
    wanted.colours = 16;
    wanted.transparent = 200; // no colour of the table
    expectAsShown(wanted, "no such colour");
}

TEST_F(GifPage, GreyPagesAreGrey) {
    Sketch wanted = sketch(91, 130);
    EXPECT_EQ(read(gifFile(wanted)).format(), QImage::Format_RGB32);
    wanted.grey = true;
    for (const int colours : {2, 16, 256}) {
        wanted.colours = colours;
        expectAsShown(wanted, std::to_string(colours));
        EXPECT_EQ(readGif(path()).format(), QImage::Format_Grayscale8);
        EXPECT_EQ(loadPage(path(), 0).raster->image.format(), QImage::Format_Grayscale8);
    }
}

TEST_F(GifPage, WhatOtherProgramsWrite) {
    for (const char* options : {"plasma: -colors 200",
                                "plasma: -colors 200 -interlace GIF",
                                "plasma:red-blue -monochrome",
                                "plasma: -colors 3",
                                "gradient: -colors 64 -transparent white",
                                "plasma: -colors 32 -repage 400x300+20+30",
                                "xc:white -fill black -draw 'rectangle 10,10 60,20' -type bilevel",
                                "plasma: plasma: -colors 40 -delay 20 -dispose previous",
                                "-dispose background plasma: gradient: -layers optimize"}) {
        const std::string command =
            "convert -size 320x240 " + std::string(options) + " gif:" + path();
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        expectAsShown(command);
    }
}

TEST_F(GifPage, UnusualFilesAreLeftToOthers) {
    Sketch beyond = sketch(40, 30);
    beyond.picture = QRect(20, 0, 30, 20);
    EXPECT_TRUE(read(gifFile(beyond)).isNull());
    Sketch lost = sketch(4000, 30);
    lost.picture = QRect(20, 0, 30, 20);
    EXPECT_TRUE(read(gifFile(lost)).isNull());
    Sketch flat = sketch(20, 4);
    flat.interlaced = true;
    EXPECT_TRUE(read(gifFile(flat)).isNull());
    EXPECT_TRUE(read({}).isNull());
    EXPECT_TRUE(readGif(folder_.file("missing")).isNull());
    EXPECT_TRUE(readGif(folder_.path()).isNull());
}

// A page that is cut off is shown as far as it goes, by the other reader.
TEST_F(GifPage, CutFilesAreNotTakenForWhole) {
    Sketch wanted = sketch(60, 50);
    wanted.transparent = 4;
    const Bytes whole = gifFile(wanted);
    for (size_t length = 0; length < whole.size(); ++length) {
        if (const QImage image =
                read({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)});
            !image.isNull()) {
            EXPECT_EQ(length, whole.size() - 1); // but the trailer
            EXPECT_EQ(image, shown());
        }
    }
    writeBytes(path(), std::span(whole).first(whole.size() / 2));
    EXPECT_EQ(loadPage(path(), 0).error, PageLoadError::none);
}

TEST_F(GifPage, DamagedFilesGiveNothingOrWhatOthersShow) {
    std::mt19937 random(17);
    for (const bool isNoise : {false, true}) {
        Sketch wanted = sketch(33, 21);
        wanted.transparent = 3;
        wanted.interlaced = true;
        wanted.colours = 16;
        if (isNoise)
            wanted.place = noise(8);
        const Bytes good = gifFile(wanted);
        for (int round = 0; round < 1500; ++round) {
            Bytes bad = good;
            for (int change = 0; change <= round % 3; ++change)
                bad[random() % bad.size()] = static_cast<uint8_t>(random());
            const QImage image = read(bad);
            if (image.isNull())
                continue;
            ASSERT_EQ(image.convertToFormat(QImage::Format_RGB32), shown()) << round;
        }
    }
}

} // namespace
} // namespace paperline

// The software scanner as a device: options, feeder and flatbed, pictures, delay.
#include "sources/software/SoftwareDevice.h"
#include "tests/sources/software/MemorySink.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace paperline::sources {

namespace {

// Notes when room for rows is asked for.
class TimedSink : public MemorySink {
public:
    std::span<uint8_t> rows(int32_t first, int32_t count) override {
        times.push_back(std::chrono::steady_clock::now());
        return MemorySink::rows(first, count);
    }
    std::vector<std::chrono::steady_clock::time_point> times;
};

class SoftwareDeviceTest : public testing::Test {
protected:
    SoftwareDeviceTest() {
        folder = testing::TempDir() + "paperline-pictures-XXXXXX";
        EXPECT_NE(mkdtemp(folder.data()), nullptr);
        set("resolution", "50");
    }
    ~SoftwareDeviceTest() override { std::filesystem::remove_all(folder); }

    void set(const std::string& name, const std::string& value) {
        ASSERT_EQ(device.setOption(name, value), ScanStatus::good) << name << '=' << value;
    }
    std::string value(const std::string& name) {
        for (const OptionDescriptor& option : device.options())
            if (option.name == name)
                return option.value;
        return "?";
    }
    void picture(const std::string& name, const std::string& bytes) {
        std::ofstream(folder + "/" + name, std::ios::binary) << bytes;
    }
    // The statuses of a whole batch, its end included.
    std::vector<ScanStatus> batch() {
        std::vector<ScanStatus> statuses{device.start()};
        while (statuses.back() == ScanStatus::good)
            statuses.push_back(device.readPage(sink));
        device.stop();
        return statuses;
    }
    size_t pagesOfBatch() { return batch().size() - 2; }

    SoftwareDevice device;
    MemorySink sink;
    std::string folder;
};

} // namespace

TEST_F(SoftwareDeviceTest, ListsItsOptionsWithTheirRanges) {
    const auto options = SoftwareDevice().options();
    std::vector<std::string> names;
    for (const OptionDescriptor& option : options)
        names.push_back(option.name);
    EXPECT_EQ(names,
              (std::vector<std::string>{
                  "source", "mode", "resolution", "count", "width", "height", "delay", "pages"}));
    EXPECT_EQ(options[0].choices,
              (std::vector<std::string>{"Flatbed", "Automatic Document Feeder"}));
    EXPECT_EQ(options[1].choices, (std::vector<std::string>{"Lineart", "Gray", "Color"}));
    EXPECT_EQ(options[1].value, "Color");
    EXPECT_EQ(options[2].value, "300");
    EXPECT_EQ(options[2].unit, "dpi");
    EXPECT_EQ(options[2].minimum, 50);
    EXPECT_EQ(options[2].maximum, 1200);
    EXPECT_EQ(options[3].value, "3");
    EXPECT_EQ(options[4].value, "210");
    EXPECT_EQ(options[6].value, "0");
    EXPECT_EQ(options[6].unit, "ms");
    EXPECT_EQ(options[6].maximum, 60000);
}

TEST_F(SoftwareDeviceTest, RefusesWhatIsOutsideAndKeepsWhatItHad) {
    for (const auto& [name, text] : {std::pair{"mode", "Sepia"},
                                     {"mode", "gray"},
                                     {"source", "ADF"},
                                     {"resolution", "49"},
                                     {"resolution", "1201"},
                                     {"resolution", "99.5"},
                                     {"resolution", "12a"},
                                     {"resolution", ""},
                                     {"resolution", "nan"},
                                     {"count", "0"},
                                     {"count", "10001"},
                                     {"width", "19"},
                                     {"height", "inf"},
                                     {"pages", "/no/such/folder"},
                                     {"delay", "-1"},
                                     {"delay", "60001"},
                                     {"delay", "1.5"},
                                     {"tea", "hot"}})
        EXPECT_EQ(device.setOption(name, text), ScanStatus::invalid) << name << '=' << text;
    EXPECT_EQ(value("mode"), "Color");
    EXPECT_EQ(value("resolution"), "50");
    EXPECT_EQ(value("pages"), "");
}

TEST_F(SoftwareDeviceTest, TheFeederHasThreeSheetsAndTheFlatbedOne) {
    EXPECT_EQ(pagesOfBatch(), 3u);
    EXPECT_EQ(pagesOfBatch(), 3u) << "filled again";
    set("count", "5");
    EXPECT_EQ(pagesOfBatch(), 5u);
    set("source", "Flatbed");
    EXPECT_EQ(pagesOfBatch(), 1u);
    EXPECT_EQ(value("count"), "1");
}

TEST_F(SoftwareDeviceTest, SheetSizesAreMillimetres) {
    set("width", "100.5");
    set("height", "50");
    set("resolution", "254");
    ASSERT_EQ(device.start(), ScanStatus::good);
    ASSERT_EQ(device.readPage(sink), ScanStatus::good);
    EXPECT_EQ(sink.format.widthPixels, 1005);
    EXPECT_EQ(sink.format.heightPixels, 500);
}

TEST_F(SoftwareDeviceTest, PicturesComeByNamePixelForPixel) {
    picture("b.pgm", std::string("P5 2 1 255\n\x10\xf0", 13));
    picture("a.ppm", "P6 1 2 255\nabcdef");
    picture("notes.txt", "no picture");
    std::filesystem::create_directory(folder + "/c.ppm");
    set("pages", folder);
    set("resolution", "222");
    EXPECT_EQ(value("count"), "2");
    ASSERT_EQ(device.start(), ScanStatus::good);
    ASSERT_EQ(device.readPage(sink), ScanStatus::good);
    EXPECT_EQ(sink.format.widthPixels, 1);
    EXPECT_EQ(sink.format.heightPixels, 2);
    EXPECT_EQ(sink.format.horizontalDpi, 222);
    EXPECT_EQ(sink.bytes, (std::vector<uint8_t>{'a', 'b', 'c', 'd', 'e', 'f'}));
    ASSERT_EQ(device.readPage(sink), ScanStatus::good);
    EXPECT_EQ(sink.bytes, (std::vector<uint8_t>{0x10, 0x10, 0x10, 0xf0, 0xf0, 0xf0}));
    EXPECT_EQ(device.readPage(sink), ScanStatus::noMorePages);
}

TEST_F(SoftwareDeviceTest, PicturesTakeTheModeAskedFor) {
    picture("a.ppm", std::string("P6 3 1 255\n\xff\xff\xff\xff\0\0\0\0\0", 20));
    set("pages", folder);
    set("mode", "Gray");
    ASSERT_EQ(device.start(), ScanStatus::good);
    ASSERT_EQ(device.readPage(sink), ScanStatus::good);
    EXPECT_EQ(sink.bytes, (std::vector<uint8_t>{255, 77, 0}));
    set("mode", "Lineart");
    ASSERT_EQ(device.start(), ScanStatus::good);
    ASSERT_EQ(device.readPage(sink), ScanStatus::good);
    EXPECT_EQ(sink.format.bitsPerPixel, 1);
    EXPECT_EQ(sink.bytes, std::vector<uint8_t>{0b10011111});
}

TEST_F(SoftwareDeviceTest, AnAskedCountRepeatsThePictures) {
    picture("a.pgm", "P5 1 1 255\nx");
    picture("b.pgm", "P5 1 1 255\ny");
    set("pages", folder);
    EXPECT_EQ(pagesOfBatch(), 2u);
    set("count", "5");
    EXPECT_EQ(pagesOfBatch(), 5u);
    EXPECT_EQ(sink.bytes.front(), 'x');
    set("count", "1");
    EXPECT_EQ(pagesOfBatch(), 1u);
    set("pages", "");
    EXPECT_EQ(pagesOfBatch(), 1u) << "drawn again";
}

TEST_F(SoftwareDeviceTest, AFolderWithoutPicturesIsAnEmptyFeeder) {
    set("pages", folder);
    EXPECT_EQ(batch(), (std::vector{ScanStatus::good, ScanStatus::noMorePages}));
    set("source", "Flatbed");
    EXPECT_EQ(batch(), (std::vector{ScanStatus::good, ScanStatus::noMorePages}));
}

TEST_F(SoftwareDeviceTest, APictureThatIsGoneOrDamagedIsAnError) {
    picture("a.pgm", "P5 1 1 255\nx");
    set("pages", folder);
    picture("a.pgm", "P5 9 9 255\nx");
    EXPECT_EQ(batch(), (std::vector{ScanStatus::good, ScanStatus::ioError}));
    EXPECT_EQ(device.errorText(), "The picture cannot be read: " + folder + "/a.pgm");
}

TEST_F(SoftwareDeviceTest, MemoryThatCannotBeHadEndsThePage) {
    ASSERT_EQ(device.start(), ScanStatus::good);
    sink.refuse = true;
    EXPECT_EQ(device.readPage(sink), ScanStatus::noMemory);
    sink.refuse = false;
    sink.failFromRow = 256;
    EXPECT_EQ(device.readPage(sink), ScanStatus::noMemory);
    EXPECT_EQ(sink.finishedRows, -1) << "half a page is none";
}

TEST_F(SoftwareDeviceTest, CancelEndsTheBatch) {
    ASSERT_EQ(device.start(), ScanStatus::good);
    device.cancel();
    EXPECT_EQ(device.readPage(sink), ScanStatus::cancelled);
    EXPECT_EQ(pagesOfBatch(), 3u) << "the next batch is whole";
}

TEST_F(SoftwareDeviceTest, TheDelayIsSpreadOverTheRows) {
    picture("a.pgm", "P5 1 100 255\n" + std::string(100, 'x'));
    for (const char* pages : {"", folder.c_str()}) {
        set("pages", pages);
        set("delay", "600");
        TimedSink timed;
        ASSERT_EQ(device.start(), ScanStatus::good);
        const auto start = std::chrono::steady_clock::now();
        ASSERT_EQ(device.readPage(timed), ScanStatus::good);
        ASSERT_GE(timed.times.size(), 50u);
        EXPECT_GE(timed.times[25] - start, std::chrono::milliseconds(280));
        EXPECT_GE(timed.times.back() - start, std::chrono::milliseconds(580));
        // A busy machine may delay the first rows, but hardly by half of the time.
        EXPECT_LT(timed.times.front() - start, std::chrono::milliseconds(300));
        set("delay", "0");
        ASSERT_EQ(device.start(), ScanStatus::good);
        ASSERT_EQ(device.readPage(sink), ScanStatus::good);
        EXPECT_EQ(sink.bytes, timed.bytes);
    }
}

TEST_F(SoftwareDeviceTest, CancelEndsTheDelay) {
    picture("a.pgm", "P5 1 1 255\nx");
    for (const char* pages : {"", folder.c_str()}) {
        set("pages", pages);
        set("delay", "60000");
        ASSERT_EQ(device.start(), ScanStatus::good);
        std::thread canceller([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            device.cancel();
        });
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(device.readPage(sink), ScanStatus::cancelled);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
        EXPECT_EQ(sink.finishedRows, -1);
        canceller.join();
    }
}

} // namespace paperline::sources

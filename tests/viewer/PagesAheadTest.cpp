// Pages that are loaded before they are asked for.
#include "viewer/PagesAhead.h"

#include "ViewerTestFiles.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <thread>

namespace paperline {
namespace {

using namespace std::chrono_literals;

class PagesAheadTest : public ::testing::Test {
protected:
    // A page file that was written long ago.
    PagePlace write(const std::string& name, const QImage& picture) {
        const std::string path = folder_.file(name);
        EXPECT_TRUE(picture.save(QString::fromStdString(path)));
        setAge(path, 1h);
        return {path, 0};
    }
    static void setAge(const std::string& path, std::chrono::seconds age) {
        std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - age);
    }

    PagesAhead::Loader counting() {
        return [this](const std::string& path, int pageIndex) {
            ++(std::this_thread::get_id() == main_ ? loadsHere_ : loadsAhead_);
            return loadPage(path, pageIndex);
        };
    }
    // The pages in the order given are loaded ahead, up to the last; false when that one never is.
    bool waitForLoadsAhead(int count) const {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (loadsAhead_ < count && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(1ms);
        return loadsAhead_ >= count;
    }

    const std::thread::id main_ = std::this_thread::get_id();
    std::atomic<int> loadsHere_{0};
    std::atomic<int> loadsAhead_{0};
    TemporaryFolder folder_;
    const PagePlace shown_{folder_.file("shown.png"), 0};
};

QRgb middle(const LoadedPage& page) {
    return page.raster->image.pixel(page.raster->image.rect().center());
}

QImage filled(QRgb colour, int side = 40) {
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

constexpr QRgb red = qRgb(255, 0, 0);
constexpr QRgb blue = qRgb(0, 0, 255);

TEST_F(PagesAheadTest, AnExpectedPageIsThereWhenItIsAskedFor) {
    const PagePlace page = write("a.png", filled(red));
    PagesAhead pages(counting());
    pages.expect(shown_, {page});
    ASSERT_TRUE(waitForLoadsAhead(1));
    const LoadedPage loaded = pages.load(page);
    ASSERT_NE(loaded.raster, nullptr);
    EXPECT_EQ(middle(loaded), red);
    EXPECT_EQ(loadsHere_, 0);
}

TEST_F(PagesAheadTest, APageThatNobodyExpectedIsLoadedAtOnce) {
    const PagePlace page = write("a.png", filled(red));
    PagesAhead pages(counting());
    EXPECT_EQ(middle(pages.load(page)), red);
    EXPECT_EQ(loadsHere_, 1);
    EXPECT_EQ(loadsAhead_, 0);
}

TEST_F(PagesAheadTest, PagesAreLoadedInTheOrderGiven) {
    const PagePlace first = write("b.png", filled(red));
    const PagePlace second = write("a.png", filled(blue));
    std::vector<std::string> order;
    std::latch both(2);
    PagesAhead pages([&](const std::string& path, int pageIndex) {
        order.push_back(path);
        both.count_down();
        return loadPage(path, pageIndex);
    });
    pages.expect(shown_, {first, second});
    both.wait();
    EXPECT_EQ(order, (std::vector<std::string>{first.path, second.path}));
}

TEST_F(PagesAheadTest, TheShownPageIsKeptWhileItIsExpected) {
    const PagePlace page = write("a.png", filled(red));
    PagesAhead pages(counting());
    const auto raster = pages.load(page).raster;
    pages.expect(page, {});
    EXPECT_EQ(pages.load(page).raster, raster);
    EXPECT_EQ(loadsHere_, 1);
    EXPECT_EQ(loadsAhead_, 0);
}

TEST_F(PagesAheadTest, TheShownPageIsNotLoadedAhead) {
    const PagePlace page = write("a.png", filled(red));
    const PagePlace next = write("b.png", filled(blue));
    std::promise<std::string> first;
    std::once_flag once;
    PagesAhead pages([&](const std::string& path, int pageIndex) {
        std::call_once(once, [&] { first.set_value(path); });
        return loadPage(path, pageIndex);
    });
    pages.expect(page, {next});
    EXPECT_EQ(first.get_future().get(), next.path);
}

TEST_F(PagesAheadTest, PagesThatAreNoLongerExpectedGo) {
    const PagePlace page = write("a.png", filled(red));
    PagesAhead pages(counting());
    const std::weak_ptr<const PageRaster> raster = pages.load(page).raster;
    ASSERT_FALSE(raster.expired());
    pages.expect(shown_, {});
    EXPECT_TRUE(raster.expired());
}

TEST_F(PagesAheadTest, AReplacedFileIsLoadedAnew) {
    const PagePlace page = write("a.bmp", filled(red));
    const auto time = std::filesystem::last_write_time(page.path);
    PagesAhead pages(counting());
    pages.expect(shown_, {page});
    ASSERT_TRUE(waitForLoadsAhead(1));
    ASSERT_EQ(middle(pages.load(page)), red);
    // Another file of the same name, size and time.
    const PagePlace other = write("b.bmp", filled(blue));
    ASSERT_EQ(std::filesystem::file_size(other.path), std::filesystem::file_size(page.path));
    std::filesystem::last_write_time(other.path, time);
    std::filesystem::rename(other.path, page.path);
    EXPECT_EQ(middle(pages.load(page)), blue);
    EXPECT_EQ(loadsHere_, 1);
}

TEST_F(PagesAheadTest, AFileWrittenInPlaceIsLoadedAnew) {
    const PagePlace page = write("a.bmp", filled(red));
    PagesAhead pages(counting());
    pages.expect(shown_, {page});
    ASSERT_TRUE(waitForLoadsAhead(1));
    ASSERT_EQ(middle(pages.load(page)), red);
    const PagePlace other = write("b.bmp", filled(blue));
    writeBytes(page.path, readBytes(other.path));
    EXPECT_EQ(middle(pages.load(page)), blue);
}

TEST_F(PagesAheadTest, AFileWhoseTimeWasSetBackIsLoadedAnew) {
    const PagePlace page = write("a.bmp", filled(red));
    const auto time = std::filesystem::last_write_time(page.path);
    PagesAhead pages(counting());
    pages.expect(shown_, {page});
    ASSERT_TRUE(waitForLoadsAhead(1));
    ASSERT_EQ(middle(pages.load(page)), red);
    const PagePlace other = write("b.bmp", filled(blue));
    writeBytes(page.path, readBytes(other.path));
    std::filesystem::last_write_time(page.path, time);
    EXPECT_EQ(middle(pages.load(page)), blue);
}

TEST_F(PagesAheadTest, AVanishedFileIsMissed) {
    const PagePlace page = write("a.png", filled(red));
    PagesAhead pages(counting());
    pages.expect(shown_, {page});
    ASSERT_TRUE(waitForLoadsAhead(1));
    ASSERT_NE(pages.load(page).raster, nullptr);
    std::filesystem::remove(page.path);
    const LoadedPage loaded = pages.load(page);
    EXPECT_EQ(loaded.error, PageLoadError::cannotOpen);
    EXPECT_EQ(loaded.raster, nullptr);
}

TEST_F(PagesAheadTest, ADamagedPageIsAskedOfItsFileAgain) {
    const PagePlace page = write("a.png", filled(red));
    const Bytes whole = readBytes(page.path);
    cutTo(page.path, 60);
    setAge(page.path, 1h);
    PagesAhead pages(counting());
    pages.expect(shown_, {page});
    ASSERT_TRUE(waitForLoadsAhead(1));
    EXPECT_NE(pages.load(page).error, PageLoadError::none);
    writeBytes(page.path, whole);
    EXPECT_EQ(middle(pages.load(page)), red);
}

// Each of these is left out, and the page behind it is loaded all the same.
TEST_F(PagesAheadTest, LeavesOutWhatItMustNotLoad) {
    const PagePlace young = write("young.png", filled(red));
    setAge(young.path, -1h); // and stays young on a busy machine
    writePdf(folder_.file("a.pdf"), {{120, 80, "1 0 0"}});
    setAge(folder_.file("a.pdf"), 1h);
    QImage grey(7000, 7000, QImage::Format_Mono);
    grey.fill(0);
    const PagePlace huge = write("huge.png", grey);
    const PagePlace plain = write("plain.png", filled(blue));
    std::vector<std::string> order;
    std::latch loaded(1);
    PagesAhead pages([&](const std::string& path, int pageIndex) {
        order.push_back(path);
        loaded.count_down();
        return loadPage(path, pageIndex);
    });
    pages.expect(shown_,
                 {young, {folder_.file("a.pdf"), 0}, huge, {folder_.file("none.png"), 0}, plain});
    loaded.wait();
    EXPECT_EQ(order, std::vector<std::string>{plain.path});
}

TEST_F(PagesAheadTest, ThePagesOfOneFileAreToldApart) {
    const std::string path = folder_.file("a.tif");
    writeTiff(path, {{filled(red)}, {filled(blue)}});
    setAge(path, 1h);
    PagesAhead pages(counting());
    pages.expect(shown_, {{path, 0}, {path, 1}});
    ASSERT_TRUE(waitForLoadsAhead(2));
    EXPECT_EQ(middle(pages.load({path, 1})), blue);
    EXPECT_EQ(middle(pages.load({path, 0})), red);
    EXPECT_EQ(loadsHere_, 0);
}

// A loader that waits until it may go on.
struct HeldLoader {
    std::atomic<int> calls{0};
    std::latch begun{1};
    std::promise<void> mayEnd;
    std::shared_future<void> end{mayEnd.get_future()};

    PagesAhead::Loader loader() {
        return [this](const std::string& path, int pageIndex) {
            if (calls++ == 0)
                begun.count_down();
            end.wait();
            return loadPage(path, pageIndex);
        };
    }
};

TEST_F(PagesAheadTest, APageThatIsBeingLoadedIsWaitedFor) {
    const PagePlace page = write("a.png", filled(red));
    HeldLoader held;
    PagesAhead pages(held.loader());
    pages.expect(shown_, {page});
    held.begun.wait();
    std::future<LoadedPage> asked =
        std::async(std::launch::async, [&] { return pages.load(page); });
    EXPECT_EQ(asked.wait_for(50ms), std::future_status::timeout);
    held.mayEnd.set_value();
    EXPECT_EQ(middle(asked.get()), red);
    EXPECT_EQ(held.calls, 1);
}

TEST_F(PagesAheadTest, APageThatIsNoLongerExpectedWhenItIsLoadedIsNotKept) {
    const PagePlace page = write("a.png", filled(red));
    std::promise<std::weak_ptr<const PageRaster>> given;
    HeldLoader held;
    PagesAhead pages([&, load = held.loader()](const std::string& path, int pageIndex) {
        LoadedPage loaded = load(path, pageIndex);
        given.set_value(loaded.raster);
        return loaded;
    });
    pages.expect(shown_, {page});
    held.begun.wait();
    pages.expect(shown_, {});
    held.mayEnd.set_value();
    const std::weak_ptr<const PageRaster> raster = given.get_future().get();
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!raster.expired() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(1ms);
    EXPECT_TRUE(raster.expired());
}

TEST_F(PagesAheadTest, EndsAfterThePageThatIsBeingLoaded) {
    const PagePlace page = write("a.png", filled(red));
    HeldLoader held;
    auto pages = std::make_unique<PagesAhead>(held.loader());
    pages->expect(shown_, {page});
    held.begun.wait();
    std::future<void> ended = std::async(std::launch::async, [&] { pages.reset(); });
    EXPECT_EQ(ended.wait_for(50ms), std::future_status::timeout);
    held.mayEnd.set_value();
    ended.get();
}

} // namespace
} // namespace paperline

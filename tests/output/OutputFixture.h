// A controller with a save folder, staging folders, a scripted host and recorded messages.
#pragma once

#include "base/BrandProfile.h"
#include "base/FileFormats.h"
#include "controller/AppDelegate.h"
#include "output/PageCodecs.h"
#include "output/PageNaming.h"
#include "output/ScratchNames.h"
#include "platform/desktop/Alert.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace paperline {

using Bytes = std::vector<uint8_t>;

// A page and what the transfer knows of it.
struct TestPage {
    std::shared_ptr<BitmapImageRep> representation;
    Image image;
    TW_IMAGEINFO info{};
};

inline TestPage makeTestPage(int32_t wide, int32_t high, int bits, const Bytes& pixels = {}) {
    const int64_t bytesPerRow = bits == 1 ? (wide + 7) / 8 : int64_t{wide} * bits / 8;
    TestPage page;
    page.representation = BitmapImageRep::make({.pixelsWide = wide,
                                                .pixelsHigh = high,
                                                .bitsPerSample = bits == 1 ? 1 : 8,
                                                .samplesPerPixel = bits == 24 ? 3 : 1,
                                                .bitsPerPixel = bits,
                                                .bytesPerRow = bytesPerRow},
                                               2);
    std::copy(pixels.begin(), pixels.end(), page.representation->bitmapData().begin());
    page.image = Image(page.representation);
    page.info.XResolution = {300, 0};
    page.info.YResolution = {300, 0};
    page.info.ImageWidth = wide;
    page.info.ImageLength = high;
    return page;
}

// Writes the names of its pages, one a line, so that a test can read what was joined.
class ListingJoiner : public PageJoiner {
public:
    explicit ListingJoiner(std::string path) : path_(std::move(path)) {}
    Added add(const std::string& pageFile) override {
        if (!fileExists(pageFile))
            return Added::unreadable;
        listing_ += lastPathComponent(pageFile) + "\n";
        return Added::yes;
    }
    bool finish() override { return writeFile(path_, Bytes(listing_.begin(), listing_.end())); }

private:
    std::string path_;
    std::string listing_;
};

inline PageCodecs::JoinerFactory listingJoiner() {
    return [](const std::string& path) { return std::make_unique<ListingJoiner>(path); };
}

class OutputTest : public testing::Test {
protected:
    void SetUp() override {
        brandBefore_ = gBrandNumber;
        gBrandNumber = 7;
        host().freeSpaceBytes = [this](const std::string&) { return freeBytes; };
        setAlertPresenter([this](const Alert& alert) {
            alerts.push_back(alert);
            return alertDefaultReturn;
        });
        makeStagingFolders();
        controller = std::make_unique<AppDelegate>();
        controller->mMenuFileSave = 1;
        controller->profileFolderName = folder;
        controller->createFolerprofileFolderName = folder;
        controller->saveImageName = "Image";
        controller->profileFileformatSelect = formatJpeg;
        controller->currentPage = 1;
        controller->currentMultiPage = 1;
        controller->scannerName = "Alpha 3000 Duplex";
        controller->savedFileObserver = [this](const SavedFile& file) { saved.push_back(file); };
        firstPageOfBatch = true;
        memoryShortage = false;
        multiPageTargetPath.clear();
        multiTiffListPath.clear();
        iNextImage = 0;
    }
    void TearDown() override {
        controller.reset();
        setAlertPresenter(nullptr);
        host() = realHost();
        pageCodecs() = platformCodecs();
        gBrandNumber = brandBefore_;
        removePath(scratchPath(scratchRootName));
        removePath(scratchPath(previewName));
    }

    static void makeStagingFolders() {
        removePath(scratchPath(scratchRootName));
        ASSERT_TRUE(createFolderWithParents(scratchPath(stagingFolderName)));
        ASSERT_TRUE(createFolderWithParents(scratchPath(listStagingFolderName)));
    }

    int32_t save(TestPage page) {
        return controller->saveXferDatatoMedia(
            *page.representation,
            page.image,
            page.representation->bitmapData().data(),
            300.0F,
            300.0F,
            page.info,
            static_cast<int32_t>(page.representation->bytesPerRow()));
    }
    int32_t saveGrey() { return save(makeTestPage(4, 4, 8)); }

    std::string inFolder(const std::string& name) const { return folder + "/" + name; }
    static std::string staged(const std::string& name) {
        return scratchPath(stagingFolderName) + "/" + name;
    }
    static std::string textOf(const std::string& path) {
        const Bytes bytes = readFile(path).value_or(Bytes{});
        return {bytes.begin(), bytes.end()};
    }
    void touch(const std::string& path, const std::string& text = "x") const {
        ASSERT_TRUE(writeFile(path, Bytes(text.begin(), text.end())));
    }

    const testing_support::TestFolder testFolder;
    const std::string& folder = testFolder.path();
    std::optional<int64_t> freeBytes = int64_t{1} << 40;
    std::vector<Alert> alerts;
    std::vector<SavedFile> saved;
    std::unique_ptr<AppDelegate> controller;

private:
    uint32_t brandBefore_ = 0;
};

} // namespace paperline

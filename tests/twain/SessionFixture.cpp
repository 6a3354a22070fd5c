#include "SessionFixture.h"

#include "base/BrandProfile.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "tests/support/MainLoopTesting.h"
#include "twain/TWAINHandler.h"

#include <QEventLoop>
#include <QTimer>

#include <cstring>

namespace paperline::test {
namespace {

template <typename Number> Number numberAt(const std::vector<uint8_t>& bytes, size_t offset) {
    Number number{};
    if (offset + sizeof number <= bytes.size())
        std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

} // namespace

SessionFixture::SessionFixture() {
    folder = root_ + "/Pages";
    EXPECT_TRUE(createFolder(folder));
    bundleBefore_ = bundlePath();
    setBundlePath(root_ + "/Paperline.app"); // no build tree around it, and no sources in that

    setAlertPresenter([this](const Alert& alert) {
        alerts.push_back(alert.message);
        return alertDefaultReturn;
    });
    host().availableMemoryBytes = [this] { return std::optional(availableBytes); };
    host().freeSpaceBytes = [](const std::string&) { return std::optional(INT64_MAX); };
    desktop().revealFile = [this](const std::string& path) { revealed.push_back(path); };
    resetTerminationRequest();
    makeController();
}

void SessionFixture::startOver() {
    controller.reset();
    endTwainSession();
    dsm.reset();
    removePath(folder);
    EXPECT_TRUE(createFolder(folder));
    alerts.clear();
    revealed.clear();
    scansEnded = 0;
    makeController();
}

void SessionFixture::makeController() {
    gBrandNumber = 7;
    gNoDisplayImageShown = 0;
    gHighResolutionPageCount = 0;
    iNextImage = 0;
    gLanguageBundle = nullptr;

    controller = std::make_unique<AppDelegate>();
    controller->currentSaveFolder = &folderField;
    controller->scanEndedObserver = [this] { ++scansEnded; };
    controller->mCurrentPath = root_ + "/Paperline.app"; // holds neither settings nor languages
    controller->mResourcePath = root_ + "/Paperline.app/Contents/Resources";
    controller->_selectedRaw = -1;
    controller->_fitOrAcutalImage = 1;
    controller->mMenuFileSave = 1;
    controller->currentPage = 1;
    controller->currentMultiPage = 1;
    controller->profileFolderName = folder + "/Image";
    controller->createFolerprofileFolderName = folder;
    controller->saveImageName = "Image";
    controller->SelectFolderAutoDetectFlag = 1;
}

SessionFixture::~SessionFixture() {
    controller.reset();
    endTwainSession();
    setAlertPresenter({});
    desktop() = {};
    host() = realHost();
    setBundlePath(bundleBefore_);
    removePath(scratchFolder());
}

ScriptedSource& SessionFixture::addSource(std::string_view manufacturer,
                                          std::string_view productName) {
    ScriptedSource source;
    source.identity = sourceIdentity(manufacturer, productName);
    dsm.sources.push_back(std::move(source));
    return dsm.sources.back();
}

void SessionFixture::connect() {
    controller->TwainInit();
    controller->selectSpcificSource();
    ASSERT_EQ(controller->CheckIdentity(0), twain::TWRC_SUCCESS);
    dsm.forgetCalls();
}

bool SessionFixture::runUntilScanEnds() {
    return testing_support::runUntilRaised(scansEnded);
}

void SessionFixture::runFor(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

void SessionFixture::scanAtOnce() {
    controller->mScanSetup = 1;
    controller->nonUI();
    controller->xferReady(nullptr);
}

std::string SessionFixture::savedPath(int number, const std::string& extension) const {
    std::string digits = std::to_string(number);
    digits.insert(0, digits.size() < 5 ? 5 - digits.size() : 0, '0');
    return folder + "/Image_" + digits + "." + extension;
}

std::string SessionFixture::scratchFolder() const {
    return scratchPath("/tmp/CorvaneTempImage");
}

void SessionFixture::writeTextFile(const std::string& path, const std::string& text) const {
    testing_support::writeTextFile(path, text);
}

BmpPixels readBmp(const std::string& path) {
    BmpPixels picture;
    const std::optional<std::vector<uint8_t>> file = readFile(path);
    if (!file || file->size() < 54)
        return picture;
    picture.widthPixels = numberAt<int32_t>(*file, 18);
    picture.heightPixels = numberAt<int32_t>(*file, 22);
    picture.bitsPerPixel = numberAt<uint16_t>(*file, 28);
    picture.pixelsPerMetre = numberAt<int32_t>(*file, 38);
    const auto offset = numberAt<uint32_t>(*file, 10);
    const auto height = static_cast<size_t>(picture.heightPixels);
    const auto bits =
        static_cast<size_t>(picture.widthPixels) * static_cast<size_t>(picture.bitsPerPixel);
    const size_t lineBytes = (bits + 7) / 8;
    const size_t stride = (bits + 31) / 32 * 4;
    if (offset + stride * height > file->size())
        return picture;
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* line = file->data() + offset + (height - 1 - y) * stride;
        picture.bytes.insert(picture.bytes.end(), line, line + lineBytes);
    }
    for (size_t n = 0; picture.bitsPerPixel == 24 && n + 2 < picture.bytes.size(); n += 3)
        std::swap(picture.bytes[n], picture.bytes[n + 2]);
    return picture;
}

} // namespace paperline::test

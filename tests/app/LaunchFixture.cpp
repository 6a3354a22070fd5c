#include "tests/app/LaunchFixture.h"

#include "base/BrandProfile.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "tests/support/MainLoopTesting.h"
#include "twain/TWAINHandler.h"

#include <QDialog>
#include <QTableView>
#include <QTimer>

#include <filesystem>

namespace paperline::test {
namespace {

constexpr double afternoon = 1'768'572'207.512;

void standStill(Host& host, const std::string& home) {
    host.secondsSinceEpoch = [] { return afternoon; };
    host.loginName = [] { return std::string("ada"); };
    host.homeFolder = [home] { return home; };
    host.localeIdentifier = [] { return std::string("en_US"); };
    host.preferredLanguages = [] { return std::vector<std::string>{"en-US"}; };
    host.systemVersion = [] { return SystemVersion{12, 5, 0}; };
    host.availableMemoryBytes = [] { return std::optional<uint64_t>(0xffffffff); };
    host.freeSpaceBytes = [](const std::string&) { return std::optional(INT64_MAX); };
}

} // namespace

LaunchFixture::LaunchFixture() {
    home = folder + "/home";
    bundle = folder + "/Paperline.app";
    EXPECT_TRUE(createFolderWithParents(home + "/Documents"));
    EXPECT_TRUE(createFolderWithParents(bundle + "/Contents/MACOS"));
    std::filesystem::create_directory_symlink(PAPERLINE_TEST_BUNDLE "/Contents/Resources",
                                              bundle + "/Contents/Resources");
    bundleBefore_ = bundlePath();
    setBundlePath(bundle);
    standStill(host(), home);
    setAlertPresenter([this](const Alert& alert) {
        alerts.push_back(alert);
        return alertDefaultReturn;
    });
    desktop().revealFile = [this](const std::string& path) { revealed.push_back(path); };
    removePath(userDataFolder());
    resetTerminationRequest();
    gLanguageBundle = nullptr;
    gNoDisplayImageShown = 0;
    gHighResolutionPageCount = 0;
    iNextImage = 0;
    launchAborted = false;
}

LaunchFixture::~LaunchFixture() {
    controller.reset();
    endTwainSession();
    setAlertPresenter({});
    desktop() = {};
    host() = realHost();
    resetTerminationRequest();
    setBundlePath(bundleBefore_);
    removePath(userDataFolder());
    removePath(scratchPath("/tmp/CorvaneTempImage"));
}

ScriptedSource& LaunchFixture::addSource(std::string_view productName,
                                         std::string_view manufacturer) {
    ScriptedSource source;
    source.identity = sourceIdentity(manufacturer, productName);
    dsm.sources.push_back(std::move(source));
    writeTextFile(sourceBundle(productName) + "/Versions/A/Resources/Info.plist",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                  "<key>ProductName</key><string>" +
                      std::string(productName) + "</string><key>Manufacturer</key><string>" +
                      std::string(manufacturer) + "</string></dict></plist>");
    return dsm.sources.back();
}

bool LaunchFixture::launch(uint32_t brand) {
    controller = std::make_unique<AppDelegate>(
        LaunchOptions{.brand = brand, .commandLine = false, .sourceName = {}});
    controller->scanEndedObserver = [this] { ++scansEnded; };
    if (controller->init() == nullptr)
        return false;
    controller->loadInterface();
    QTimer watcher;
    QObject::connect(&watcher, &QTimer::timeout, [this] { answerSelectionWindow(); });
    watcher.start(5);
    controller->applicationWillFinishLaunching();
    controller->applicationDidFinishLaunching();
    return true;
}

void LaunchFixture::answerSelectionWindow() {
    QDialog* window = controller->twainSelectSourceWindow;
    if (window == nullptr || !window->isVisible())
        return;
    ++selectionsShown;
    if (choose_) {
        choose_(*controller);
        return;
    }
    ADD_FAILURE() << "the selection window shows";
    controller->doBtnCancel(nullptr);
}

void LaunchFixture::closeAndEnd() {
    controller->windowWillClose();
    end();
}

void LaunchFixture::end() {
    controller->applicationWillTerminate();
    endTwainSession();
}

bool LaunchFixture::runUntilScanEnds() {
    return testing_support::runUntilRaised(scansEnded);
}

void LaunchFixture::chooseRow(AppDelegate& asked, int row) const {
    asked._tableViewSelectSource->setCurrentIndex(
        asked._tableViewSelectSource->model()->index(row, 0));
}

void LaunchFixture::writeSettings(const std::string& dictionaryBody) const {
    writeTextFile(settingsFile(),
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" +
                      dictionaryBody + "</dict></plist>");
}

std::string LaunchFixture::settingsText() const {
    return textOfFile(settingsFile());
}

std::string LaunchFixture::sourceBundle(std::string_view productName) const {
    return userDataFolder() + "/TWAIN Data Sources/" + std::string(productName) + ".ds";
}

std::string LaunchFixture::languageFile(std::string_view productName) const {
    return sourceBundle(productName) + "/Versions/A/cvscan.plist";
}

void LaunchFixture::writeTextFile(const std::string& path, const std::string& text) const {
    testing_support::writeTextFile(path, text);
}

std::string LaunchFixture::textOfFile(const std::string& path) const {
    const std::vector<uint8_t> bytes = readFile(path).value_or(std::vector<uint8_t>{});
    return {bytes.begin(), bytes.end()};
}

} // namespace paperline::test

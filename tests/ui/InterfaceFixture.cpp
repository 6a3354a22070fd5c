#include "tests/ui/InterfaceFixture.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "ui/MenuText.h"

#include <cstdlib>
#include <map>

namespace paperline {

void InterfaceFixture::SetUp() {
    folder = "/tmp/paperline-ui-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    setBundlePath(PAPERLINE_TEST_BUNDLE);
    setAlertPresenter([this](const Alert& alert) {
        alerts.push_back(alert);
        return alertDefaultReturn;
    });
    gNoDisplayImageShown = 0;
    gLanguageBundle = nullptr;
    resetTerminationRequest();
}

void InterfaceFixture::TearDown() {
    controller.reset();
    setAlertPresenter({});
    desktop() = {};
    host() = realHost();
    QApplication::setLayoutDirection(Qt::LeftToRight);
    resetTerminationRequest();
    removePath(folder);
}

AppDelegate& InterfaceFixture::start(uint32_t brand, int32_t language) {
    gBrandNumber = brand;
    controller = std::make_unique<AppDelegate>(LaunchOptions{.brand = brand, .sourceName = {}});
    AppDelegate& made = *controller;
    made.mCurrentPath = bundlePath();
    made.mResourcePath = resourcePath();
    made._FloppySwitchON = 1;
    made.mMenuFileSave = 1;
    made._selectedRaw = -1;
    made._fitOrAcutalImage = 1;
    made.mNeedSetImage = 1;
    made.SelectFolderAutoDetectFlag = 1;
    made.profileLanguage = language;
    made.getSystemInfo();
    made.loadInterface();
    made.showSaveSwitch(true);
    made.setFirstUILanguage(1);
    made.rebuildMenusAndLabels();
    return made;
}

QStringList InterfaceFixture::titles(const QMenu* menu) {
    QStringList list;
    for (const QAction* item : menu->actions())
        list.append(item->isSeparator() ? QString("-") : plainTitle(item->text()));
    return list;
}

std::shared_ptr<const LanguageBundle> InterfaceFixture::echoingBundle() {
    std::map<std::string, std::string> texts;
    const auto english = LanguageBundle::load(resourcePath() + "/en.lproj");
    for (const auto& [key, text] : english->texts())
        texts[key] = "<" + key + ">";
    return std::make_shared<const LanguageBundle>("echo", texts);
}

void InterfaceFixture::writeLanguage(const std::string& resources,
                                     const std::string& languageFolder,
                                     const std::string& strings) {
    ASSERT_TRUE(createFolderWithParents(resources + "/" + languageFolder));
    ASSERT_TRUE(writeFile(resources + "/" + languageFolder + "/Localizable.strings",
                          {reinterpret_cast<const uint8_t*>(strings.data()), strings.size()}));
}

} // namespace paperline

// Finds, loads and switches the interface language.
#include "controller/AppDelegate.h"

#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "platform/host/Host.h"
#include "ui/LanguageTable.h"
#include "ui/MenuText.h"
#include "ui/PlatformTexts.h"

#include <QActionGroup>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTableView>

#include <utility>

namespace paperline {

std::shared_ptr<const LanguageBundle> gLanguageBundle;

namespace {

std::string languageFolder(const std::string& resources, int32_t language) {
    return resources + "/" + languageTable[static_cast<size_t>(language)].resourceFolder;
}

QMenu* languageSubmenu(const QMenu* optionsMenu) {
    if (optionsMenu == nullptr || optionsMenu->actions().isEmpty())
        return nullptr;
    return optionsMenu->actions().constFirst()->menu();
}

} // namespace

void AppDelegate::getSystemInfo() {
    TraceScope trace("getSystemInfo");
    const SystemVersion version = host().systemVersion();
    mVersionMajor = version.majorNumber;
    mVersionMinor = version.minorNumber;
    mVersionBugFix = version.bugFix;
    if (isTracing())
        traceText("Mac OS X version",
                  std::to_string(mVersionMajor) + "." + std::to_string(mVersionMinor) + "." +
                      std::to_string(mVersionBugFix));
    const std::string locale = host().localeIdentifier();
    traceText("Current locale", locale);
    sysLanguage = languageOfLocale(locale);

    supportedLanguage = brandProfile(gBrandNumber).supportedLanguages;
    availableCount = 0;
    for (const int32_t language : offeredLanguages(supportedLanguage)) {
        const LanguageRow& row = languageTable[static_cast<size_t>(language)];
        availableLanguage[static_cast<size_t>(availableCount)] = {
            .langID = language, .langFolder = row.resourceFolder, .displayName = row.menuName};
        ++availableCount;
    }
    pAvailable = availableLanguage.data();
}

int32_t AppDelegate::setFirstUILanguage(int32_t mode) {
    TraceScope trace("setFirstUILanguage");
    int32_t language = languageInTable(profileLanguage);
    if (mode != 1) {
        currentOSLanguage = systemLanguage(host().preferredLanguages(), supportedLanguage);
        language = currentOSLanguage;
    }
    if (loadLanguage(language))
        osLangBundle = gLanguageBundle;

    titleSelectionWindow();
    return language;
}

void AppDelegate::setProfileLanguage(int32_t language) {
    profileLanguage = language;
    supportLanguageProfileLanguage =
        languageMenuPosition(supportedLanguage, language).value_or(supportLanguageProfileLanguage);
}

void AppDelegate::titleSelectionWindow() {
    if (twainSelectSourceWindow == nullptr)
        return;
    const auto text = [this](const char* key) {
        return QString::fromStdString(localizedString(osLangBundle, key));
    };
    twainSelectSourceWindow->setWindowTitle(text("SelectScannerModel"));
    twainSelectSourceScannerType->setText(text("ScannerModel"));
    twainSelectSourceOKBtn->setText(text("OK"));
    twainSelectSourceCancelBtn->setText(text("Cancel"));
    _tableViewSelectSource->setAccessibleName(text("SourceListName"));
    _tableViewSelectSource->setAccessibleDescription(text("SourceListHelp"));
}

bool AppDelegate::loadLanguage(int32_t language) {
    const int32_t inTable = languageInTable(language);
    const std::string folder = languageFolder(mResourcePath, inTable);
    traceText("Language resource Path", folder);
    std::shared_ptr<const LanguageBundle> bundle = LanguageBundle::load(folder);
    if (bundle == nullptr)
        return false;
    traceText("Language Data", bundle->folder());
    gLanguageBundle = std::move(bundle);
    mlangBundle = gLanguageBundle;
    setPlatformTexts(gLanguageBundle, languageTable[static_cast<size_t>(inTable)].localeIdentifier);
    QApplication::setLayoutDirection(inTable == languageArabic ? Qt::RightToLeft : Qt::LeftToRight);
    return true;
}

void AppDelegate::addLanguageItemtoMenu(const std::shared_ptr<const LanguageBundle>& bundle) {
    TraceScope trace("addLanguageItemtoMenu");
    if (fileMenuLanguage == nullptr)
        return;
    auto* submenu = new QMenu(fileMenuLanguage);
    subMenuItemLanguage = submenu->menuAction();
    MnemonicChooser().setTitle(subMenuItemLanguage, localizedString(bundle, "Language"));
    auto* oneOfThem = new QActionGroup(submenu);
    // Optional: checkLanguageMenuState() clears one mark before it sets another.
    oneOfThem->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (int32_t i = 0; i < availableCount; ++i) {
        const QString name =
            QString::fromStdString(availableLanguage[static_cast<size_t>(i)].displayName);
        QAction* item = oneOfThem->addAction(submenu->addAction(name));
        item->setCheckable(true);
        item->setData(name);
        connect(item, &QAction::triggered, this, [this, item] { changeLanguage(item); });
    }
    const QList<QAction*> items = fileMenuLanguage->actions();
    fileMenuLanguage->insertAction(items.isEmpty() ? nullptr : items.constFirst(),
                                   subMenuItemLanguage);
    const int32_t position =
        supportedLanguage.empty() ? profileLanguage : supportLanguageProfileLanguage;
    checkLanguageMenuState(static_cast<uint32_t>(position), true);
}

void AppDelegate::changeLanguage(QAction* menuItem) {
    TraceScope trace("changeLanguage");
    if (menuItem == nullptr)
        return;
    for (int32_t i = 0; i < availableCount; ++i)
        checkLanguageMenuState(static_cast<uint32_t>(i), false);
    const std::string name = menuItem->data().toString().toStdString();
    for (int32_t i = 0; i < availableCount; ++i) {
        const AvailableLanguage& offered = availableLanguage[static_cast<size_t>(i)];
        if (offered.displayName != name)
            continue;
        checkLanguageMenuState(static_cast<uint32_t>(i), true);
        currentLanguage = offered.langID;
        profileLanguage = offered.langID;
        if (!supportedLanguage.empty()) {
            supportLanguageProfileLanguage = i;
            supportLanguageCurrentLanguage = i;
        }
        break;
    }
    if (loadLanguage(profileLanguage))
        SetToolbarItemAndMenuUI(mlangBundle);
    rebuildOptionsMenu();
    SetToolbarItemTip(mlangBundle);
    ReadWriteDSLanguageSetting(2, false);
}

void AppDelegate::rebuildOptionsMenu() {
    if (fileMenuLanguage == nullptr)
        return;
    // Deleted later: the click that is being handled may come from one of these submenus.
    for (QAction* item : fileMenuLanguage->actions()) {
        fileMenuLanguage->removeAction(item);
        if (QMenu* submenu = item->menu())
            submenu->deleteLater();
    }
    addLanguageItemtoMenu(mlangBundle);
    addOtherOptionsItemtoMenu(mlangBundle);
}

void AppDelegate::rebuildMenusAndLabels() {
    rebuildOptionsMenu();
    SetToolbarItemAndMenuUI(mlangBundle);
    SetToolbarItemTip(mlangBundle);
}

void AppDelegate::checkLanguageMenuState(uint32_t position, bool on) {
    TraceScope trace("checkLanguageMenuState");
    const QMenu* submenu = languageSubmenu(fileMenuLanguage);
    if (submenu == nullptr || position >= static_cast<uint32_t>(availableCount))
        return;
    const QString name = QString::fromStdString(availableLanguage[position].displayName);
    for (QAction* item : submenu->actions()) {
        if (item->data().toString() == name)
            item->setChecked(on);
    }
}

AvailableLanguage* AppDelegate::supportedLanguages(int32_t& count) {
    TraceScope trace("supportedLanguage");
    count = availableCount;
    return pAvailable;
}

} // namespace paperline

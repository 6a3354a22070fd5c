#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/Brands.h"
#include "tests/ui/InterfaceFixture.h"
#include "ui/EmptyState.h"
#include "ui/LanguageTable.h"
#include "ui/MenuText.h"

#include <QEvent>

#include <optional>

namespace paperline {
namespace {

class LocalisationTest : public InterfaceFixture {
protected:
    void preferLanguages(std::vector<std::string> languages) {
        host().preferredLanguages = [languages] { return languages; };
    }
    // Resources with a folder for every language, each saying its own folder's name under "Scan".
    std::string allLanguages() {
        const std::string resources = folder + "/Resources";
        for (const LanguageRow& row : languageTable)
            writeLanguage(resources,
                          row.resourceFolder,
                          std::string("\"Scan\" = \"scan ") + row.resourceFolder +
                              "\"; \"SelectScannerModel\" = \"title " + row.resourceFolder +
                              "\"; \"ScannerModel\" = \"label\"; \"OK\" = \"okay\"; "
                              "\"Cancel\" = \"stop\"; \"ShowInFinder\" = \"show it\"; "
                              "\"FitPage\" = \"fit " +
                              row.resourceFolder + "\";");
        return resources;
    }
    QAction* languageItem(const char* menuName) {
        for (QAction* item : controller->subMenuItemLanguage->menu()->actions())
            if (item->text() == menuName)
                return item;
        return nullptr;
    }
    static std::optional<int64_t> languageOfSource(const std::string& bundle) {
        const PropertyListFile file = readPropertyList(bundle + "/Versions/A/cvscan.plist");
        const PropertyListValue* profile = find(file.root, "Default");
        if (profile == nullptr || profile->asDictionary() == nullptr)
            return std::nullopt;
        const PropertyListValue* language = find(*profile->asDictionary(), "Language");
        return language != nullptr ? language->asInteger() : std::nullopt;
    }
    QStringList checkedLanguages() {
        QStringList names;
        for (const QAction* item : controller->subMenuItemLanguage->menu()->actions())
            if (item->isChecked())
                names.append(item->text());
        return names;
    }
};

TEST_F(LocalisationTest, SystemInformationFillsVersionLocaleAndOfferedLanguages) {
    host().systemVersion = [] { return SystemVersion{12, 7, 3}; };
    host().localeIdentifier = [] { return std::string("ko_KR"); };
    AppDelegate& made = start(7);
    EXPECT_EQ(made.mVersionMajor, 12);
    EXPECT_EQ(made.mVersionMinor, 7);
    EXPECT_EQ(made.mVersionBugFix, 3);
    EXPECT_EQ(made.sysLanguage, 4);
    EXPECT_EQ(made.supportedLanguage, "");
    EXPECT_EQ(made.availableCount, 27);
    int32_t count = 0;
    const AvailableLanguage* offered = made.supportedLanguages(count);
    ASSERT_EQ(count, 27);
    EXPECT_EQ(offered, made.pAvailable);
    for (int32_t i = 0; i < count; ++i) {
        EXPECT_EQ(offered[i].langID, i);
        EXPECT_EQ(offered[i].langFolder, languageTable[static_cast<size_t>(i)].resourceFolder);
        EXPECT_EQ(offered[i].displayName, languageTable[static_cast<size_t>(i)].menuName);
    }
}

TEST_F(LocalisationTest, AnUnknownLocaleIsEnglish) {
    host().localeIdentifier = [] { return std::string("en_GB"); };
    EXPECT_EQ(start().sysLanguage, 0);
}

TEST_F(LocalisationTest, BrandTwoOffersElevenLanguagesInTableOrder) {
    AppDelegate& made = start(2);
    EXPECT_EQ(made.supportedLanguage, "00,01,02,04,05,06,07,08,11,12,25");
    QStringList shown;
    for (const QAction* item : made.subMenuItemLanguage->menu()->actions())
        shown.append(item->text());
    EXPECT_EQ(shown,
              QStringList({"English",
                           "繁體中文",
                           "简体中文",
                           "한국어",
                           "Deutsch",
                           "Français",
                           "Español",
                           "Italiano",
                           "Русский",
                           "Portuguese",
                           "Turkish"}));
}

TEST_F(LocalisationTest, EveryOtherBrandOffersAll) {
    for (const uint32_t brand : testing_support::everyBrand)
        EXPECT_EQ(start(brand).availableCount, brand == 2 ? 11 : 27) << brand;
}

TEST_F(LocalisationTest, TheSystemsFirstLanguageIsFoundWithoutItsRegion) {
    AppDelegate& made = start();
    const std::vector<std::pair<const char*, int32_t>> expected{{"pt-BR", 12},
                                                                {"zh-Hant-TW", 1},
                                                                {"zh-Hans-CN", 2},
                                                                {"fr-CA", 6},
                                                                {"da-DK", 0},
                                                                {"no", 21},
                                                                {"ar-AE", 26},
                                                                {"th-TH", 0}};
    for (const auto& [preferred, language] : expected) {
        preferLanguages({preferred, "de-DE"});
        EXPECT_EQ(made.setFirstUILanguage(2), language) << preferred;
        EXPECT_EQ(made.currentOSLanguage, language) << preferred;
    }
    preferLanguages({});
    EXPECT_EQ(made.setFirstUILanguage(2), 0);
}

TEST_F(LocalisationTest, BrandTwoFallsBackToEnglishOutsideItsList) {
    AppDelegate& made = start(2);
    preferLanguages({"ja-JP"});
    EXPECT_EQ(made.setFirstUILanguage(2), 0);
    EXPECT_EQ(made.currentOSLanguage, 0);
    preferLanguages({"tr-TR"});
    EXPECT_EQ(made.setFirstUILanguage(2), 25);
}

TEST_F(LocalisationTest, ModeOneTakesTheProfilesLanguageAndEnglishBeyondTheTable) {
    AppDelegate& made = start();
    made.mResourcePath = allLanguages();
    preferLanguages({"ja-JP"});
    made.profileLanguage = 18;
    EXPECT_EQ(made.setFirstUILanguage(1), 18);
    EXPECT_EQ(localizedString(gLanguageBundle, "Scan"), "scan fr-CA.lproj");
    for (const int32_t beyond : {27, 1000, -1}) {
        made.profileLanguage = beyond;
        EXPECT_EQ(made.setFirstUILanguage(1), 0) << beyond;
        EXPECT_EQ(localizedString(gLanguageBundle, "Scan"), "scan en.lproj") << beyond;
    }
}

TEST_F(LocalisationTest, TheFirstLanguageTitlesTheSelectionWindow) {
    AppDelegate& made = start();
    made.mResourcePath = allLanguages();
    made.profileLanguage = 5;
    made.setFirstUILanguage(1);
    EXPECT_EQ(made.twainSelectSourceWindow->windowTitle(), "title de.lproj");
    EXPECT_EQ(made.twainSelectSourceScannerType->text(), "label");
    EXPECT_EQ(made.twainSelectSourceOKBtn->text(), "okay");
    EXPECT_EQ(made.twainSelectSourceCancelBtn->text(), "stop");
    EXPECT_EQ(made.osLangBundle, gLanguageBundle);
}

TEST_F(LocalisationTest, TheMenuMarksTheLanguageInForce) {
    start(7, 11);
    EXPECT_EQ(checkedLanguages(), QStringList("Русский"));
    EXPECT_EQ(controller->fileMenuLanguage->actions().constFirst(),
              controller->subMenuItemLanguage);
}

TEST_F(LocalisationTest, WithAListTheMenuMarksByPosition) {
    AppDelegate& made = start(2, 11);
    made.supportLanguageProfileLanguage = 8;
    made.rebuildOptionsMenu();
    EXPECT_EQ(checkedLanguages(), QStringList("Русский"));
}

TEST_F(LocalisationTest, EachLanguageOfTheMenuTakesEffectAtOnce) {
    AppDelegate& made = start();
    made.mResourcePath = allLanguages();
    const std::string source = folder + "/A.ds";
    ASSERT_TRUE(createFolderWithParents(source + "/Versions/A"));
    made.dsDatas = {DsData::initWithData("A.ds", source, "Maker", "Product")};
    made.currentDSIndex = 0;
    for (int32_t language = 0; language < 27; ++language) {
        const LanguageRow& row = languageTable[static_cast<size_t>(language)];
        QAction* item = languageItem(row.menuName);
        ASSERT_NE(item, nullptr) << row.menuName;
        item->trigger();
        EXPECT_EQ(made.profileLanguage, language);
        EXPECT_EQ(made.currentLanguage, language);
        EXPECT_EQ(made.paperlineToolbar_Scan->text().toStdString(),
                  std::string("scan ") + row.resourceFolder);
        EXPECT_EQ(made.paperlineToolbar_FitPage->toolTip().toStdString(),
                  std::string("fit ") + row.resourceFolder);
        EXPECT_EQ(languageOfSource(source), language);
        EXPECT_EQ(made.mlangBundle, gLanguageBundle);
        EXPECT_EQ(checkedLanguages(), QStringList(row.menuName));
        EXPECT_EQ(made.fileMenuLanguage->actions().size(), 2);
        EXPECT_EQ(QApplication::layoutDirection(),
                  language == 26 ? Qt::RightToLeft : Qt::LeftToRight);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(LocalisationTest, StatusLineEmptyPageAreaAndStandardButtonsFollowTheLanguage) {
    AppDelegate& made = start();
    languageItem("Deutsch")->trigger();
    const auto text = [&made](const char* key) {
        return QString::fromStdString(localizedString(made.mlangBundle, key));
    };
    QStringList shown;
    for (const QLabel* label : window().findChildren<QLabel*>())
        shown.append(label->text());
    for (const char* key : {"StatusReady", "NoPagesTitle", "NoPagesHint"}) {
        EXPECT_TRUE(shown.contains(text(key))) << key;
        EXPECT_NE(text(key), key);
    }
    EXPECT_EQ(window().findChild<EmptyState*>()->accessibleName(), text("NoPagesTitle"));
    EXPECT_EQ(window().findChild<EmptyState*>()->accessibleDescription(), text("NoPagesHint"));
    // What the platform's own windows say besides comes from its catalogue.
    EXPECT_EQ(QCoreApplication::translate("QFileDialog", "Look in:"), "Suchen in:");
    made.mResourcePath = allLanguages();
    languageItem("Français")->trigger();
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "OK"), "okay");
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "&Cancel"), "stop");
}

TEST_F(LocalisationTest, ThePanesChangeSidesButTheListAndThePageKeepTheirOwn) {
    AppDelegate& made = start();
    window().show();
    made.cellInfos.resize(20); // more than the list has room for
    made.reloadMainTable();
    for (const char* name : {"Arabic", "English", "Arabic"}) {
        languageItem(name)->trigger();
        QApplication::processEvents();
        const bool listIsLeft = made._tableViewMain->x() < made.showImageScrollView->x();
        EXPECT_EQ(listIsLeft, name == std::string("English"));
        EXPECT_EQ(made._tableViewMain->columnViewportPosition(0), 0) << name;
        EXPECT_EQ(made.showImageScrollView->layoutDirection(), Qt::LeftToRight) << name;
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(LocalisationTest, RowsCanBeChosenFromRightToLeft) {
    const std::string resources = allLanguages();
    AppDelegate& made = start();
    made.mResourcePath = resources;
    languageItem("Arabic")->trigger();
    window().show();
    made.cellInfos.resize(3);
    made.reloadMainTable();
    QApplication::processEvents();
    made.selectLastRow();
    EXPECT_EQ(made._selectedRaw, 2);
    made.dsArray.resize(2);
    made.SelectSourceCount = 2;
    made.reloadSourceTable();
    made.twainSelectSourceWindow->show();
    QApplication::processEvents();
    made.selectSourceRow(1);
    EXPECT_EQ(made.mSourceDSSelect, 1u);
}

TEST_F(LocalisationTest, WithAListASwitchSetsBothMenuPositions) {
    AppDelegate& made = start(2);
    made.mResourcePath = allLanguages();
    languageItem("Русский")->trigger();
    EXPECT_EQ(made.profileLanguage, 11);
    EXPECT_EQ(made.supportLanguageProfileLanguage, 8);
    EXPECT_EQ(made.supportLanguageCurrentLanguage, 8);
    EXPECT_EQ(checkedLanguages(), QStringList("Русский"));
}

TEST_F(LocalisationTest, AMissingFolderKeepsThePreviousTextsThoughTheMarkMoves) {
    AppDelegate& made = start();
    made.mResourcePath = allLanguages();
    languageItem("Deutsch")->trigger();
    const auto german = made.mlangBundle;
    ASSERT_TRUE(removePath(made.mResourcePath + "/ja.lproj"));
    languageItem("日本語")->trigger();
    EXPECT_EQ(made.mlangBundle, german);
    EXPECT_EQ(gLanguageBundle, german);
    EXPECT_EQ(made.paperlineToolbar_Scan->text(), "scan de.lproj");
    EXPECT_EQ(made.profileLanguage, 3);
    EXPECT_EQ(checkedLanguages(), QStringList("日本語"));
}

TEST_F(LocalisationTest, TheOptionsMarkAndItsCommandSurviveASwitch) {
    AppDelegate& made = start();
    made.mResourcePath = allLanguages();
    made.profileShowInFinder = 1;
    languageItem("Deutsch")->trigger();
    QAction* option = made.subMenuItemFileOption->menu()->actions().constFirst();
    EXPECT_EQ(plainTitle(option->text()), "show it");
    EXPECT_TRUE(option->isChecked());
    option->trigger();
    EXPECT_EQ(made.profileShowInFinder, 0);
}

TEST_F(LocalisationTest, AHalfTranslatedFolderShowsKeysForTheRest) {
    AppDelegate& made = start();
    made.mResourcePath = folder;
    writeLanguage(folder, "de.lproj", "\"Scan\" = \"Scannen\"; \"Setup\" = \"Einst");
    languageItem("Deutsch")->trigger();
    EXPECT_EQ(made.paperlineToolbar_Scan->text(), "Scannen");
    EXPECT_EQ(made.paperlineToolbar_Setup->text(), "Setup");
}

TEST_F(LocalisationTest, MarksOutsideTheOfferedListAreIgnored) {
    AppDelegate& made = start();
    made.checkLanguageMenuState(27, true);
    made.checkLanguageMenuState(UINT32_MAX, true);
    EXPECT_EQ(checkedLanguages(), QStringList("English"));
    made.checkLanguageMenuState(0, false);
    made.checkLanguageMenuState(18, true);
    EXPECT_EQ(checkedLanguages(), QStringList("French Canada"));
}

} // namespace
} // namespace paperline

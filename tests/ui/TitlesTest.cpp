#include "tests/support/Brands.h"
#include "tests/ui/InterfaceFixture.h"
#include "ui/MenuText.h"

namespace paperline {
namespace {

struct ApplicationMenuKeys {
    uint32_t brand;
    const char* about;
    const char* hide;
    const char* quit;
};

class ApplicationMenuTest : public InterfaceFixture,
                            public testing::WithParamInterface<ApplicationMenuKeys> {};

TEST_P(ApplicationMenuTest, TakesItsTextsFromTheBrandsKeys) {
    AppDelegate& made = start(GetParam().brand);
    made.SetToolbarItemAndMenuUI(echoingBundle());
    const auto shown = [](const QAction* item) { return plainTitle(item->text()).toStdString(); };
    EXPECT_EQ(shown(made.systemAbout), std::string("<") + GetParam().about + ">");
    EXPECT_EQ(shown(made.systemHideCPL), std::string("<") + GetParam().hide + ">");
    EXPECT_EQ(shown(made.systemQuitCPL), std::string("<") + GetParam().quit + ">");
    EXPECT_EQ(shown(made.systemHideOthers), "<HideOthers>");
    EXPECT_EQ(shown(made.systemShowAll), "<ShowAll>");
}

INSTANTIATE_TEST_SUITE_P(
    AllBrands,
    ApplicationMenuTest,
    testing::Values(
        ApplicationMenuKeys{0, "AboutPL", "HidePL", "QuitPL"},
        ApplicationMenuKeys{1, "AboutCPL", "HideCPL", "QuitCPL"},
        ApplicationMenuKeys{2, "AboutTalmerick", "HideTalmerick", "QuitTalmerick"},
        ApplicationMenuKeys{3, "AboutNimros", "HideNimros", "QuitNimros"},
        ApplicationMenuKeys{4, "AboutLumo", "HideLumo", "QuitLumo"},
        ApplicationMenuKeys{
            5, "AboutHastellVellumDesk", "HideHastellVellumDesk", "QuitHastellVellumDesk"},
        ApplicationMenuKeys{
            6, "AboutHastellVellumRoam", "HideHastellVellumRoam", "QuitHastellVellumRoam"},
        ApplicationMenuKeys{7,
                            "AboutHastellRoamingLeafGATHER",
                            "HideHastellRoamingLeafGATHER",
                            "QuitHastellRoamingLeafGATHER"},
        ApplicationMenuKeys{testing_support::unlistedBrand, "AboutCPL", "HideCPL", "QuitCPL"}));

class TitlesTest : public InterfaceFixture {};

TEST_F(TitlesTest, OfToolbarAndMenusComeFromTheirKeys) {
    AppDelegate& made = start();
    made.SetToolbarItemAndMenuUI(echoingBundle());
    EXPECT_EQ(made.paperlineToolbar_Setup->text(), "<Setup>");
    EXPECT_EQ(made.paperlineToolbar_Scan->text(), "<Scan>");
    EXPECT_EQ(made.paperlineToolbar_FolderSelect->text(), "<FileFormat>");
    EXPECT_EQ(plainTitle(made.fileMenuSave->title()), "<File>");
    EXPECT_EQ(plainTitle(made.fileMenuLanguage->title()), "<Options>");
    EXPECT_EQ(plainTitle(made.fileNumeWindow->title()), "<Window>");
    EXPECT_EQ(plainTitle(made.windowMini->text()), "<Minimize>");
    EXPECT_EQ(titles(made.fileMenuSave),
              QStringList({"<Save>", "-", "<Setup>", "<Scan>", "-", "<Quit>"}));
}

TEST_F(TitlesTest, TipsComeFromTheirKeys) {
    AppDelegate& made = start();
    made.SetToolbarItemTip(echoingBundle());
    EXPECT_EQ(made.paperlineToolbar_FitPage->toolTip(), "<FitPage>");
    EXPECT_EQ(made.paperlineToolbar_ActualPage->toolTip(), "<ActualPage>");
    EXPECT_EQ(made.paperlineToolbar_FileFormat->toolTip(), "<Save>");
}

TEST_F(TitlesTest, BrandsWithoutASaveCommandHaveNoSaveTipAndKeepTheEntrysTitle) {
    for (const uint32_t brand : {2u, 3u}) {
        AppDelegate& made = start(brand);
        made.SetToolbarItemAndMenuUI(echoingBundle());
        made.SetToolbarItemTip(echoingBundle());
        EXPECT_TRUE(made.paperlineToolbar_FileFormat->toolTip().isEmpty()) << brand;
        EXPECT_EQ(plainTitle(made.fileSave->text()), "Save") << brand;
        EXPECT_EQ(made.paperlineToolbar_FitPage->toolTip(), "<FitPage>") << brand;
    }
}

TEST_F(TitlesTest, AMissingTranslationShowsItsKey) {
    AppDelegate& made = start();
    const auto empty =
        std::make_shared<const LanguageBundle>("empty", std::map<std::string, std::string>());
    made.SetToolbarItemAndMenuUI(empty);
    EXPECT_EQ(made.paperlineToolbar_FolderSelect->text(), "FileFormat");
    EXPECT_EQ(plainTitle(made.systemAbout->text()), "AboutHastellRoamingLeafGATHER");
}

TEST_F(TitlesTest, TheApplicationMenuBearsTheProductsName) {
    const QString expected[]{"Paperline",
                             "Corvane Paperline",
                             "Talmerick Sheetdesk",
                             "Nimro Docklet",
                             "Lumo Docklet",
                             "Vellum Desk",
                             "VellumRoam",
                             "Roaming Leaf GATHER",
                             "Corvane Paperline"};
    for (size_t i = 0; i < testing_support::everyBrand.size(); ++i) {
        start(testing_support::everyBrand.at(i));
        EXPECT_EQ(window().findChild<QMenu*>("applicationMenu")->title(), expected[i]);
    }
}

TEST(MenuText, GivesEachEntryALetterOfItsOwn) {
    MnemonicChooser chooser;
    EXPECT_EQ(chooser.withMnemonic("Save"), "&Save");
    EXPECT_EQ(chooser.withMnemonic("Setup"), "S&etup");
    EXPECT_EQ(chooser.withMnemonic("Show All"), "Show &All"); // a word's start before any letter
    EXPECT_EQ(chooser.withMnemonic("Файл"), "&Файл");
    EXPECT_EQ(chooser.withMnemonic("ss"), "ss"); // none is left
    EXPECT_EQ(chooser.withMnemonic("设置"), "设置");
    EXPECT_EQ(chooser.withMnemonic("نافذة"), "نافذة"); // an underline would tear its letters apart
    EXPECT_EQ(chooser.withMnemonic("ファイルマネージャー"), "ファイルマネージャー");
}

TEST(MenuText, ProtectsAndRemovesAmpersands) {
    MnemonicChooser chooser;
    const QString title = chooser.withMnemonic("Copy & Paste");
    EXPECT_EQ(title, "&Copy && Paste");
    EXPECT_EQ(plainTitle(title), "Copy & Paste");
}

TEST(MenuText, LeavesLettersAloneThatTheMenuUses) {
    QAction present("&Language");
    MnemonicChooser chooser({&present});
    EXPECT_EQ(chooser.withMnemonic("Last"), "L&ast");
}

} // namespace
} // namespace paperline

// The files that the program finds below its resources.
#include "base/LanguageBundle.h"
#include "base/StringsFile.h"
#include "platform/files/FileContent.h"

#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace paperline {
namespace {

const std::string resources = std::string(PAPERLINE_TEST_BUNDLE) + "/Contents/Resources";

TEST(EnglishTexts, AreWholeAndHaveEveryKeyOfTheWindowsAndMessages) {
    const auto bytes = readFile(resources + "/en.lproj/Localizable.strings");
    ASSERT_TRUE(bytes.has_value());
    const StringsFile file = parseStringsFile(*bytes);
    EXPECT_FALSE(file.damaged) << "line " << file.damagedLine;
    for (const char* key : {"Setup",
                            "Scan",
                            "Save",
                            "FileFormat",
                            "FitPage",
                            "ActualPage",
                            "File",
                            "Quit",
                            "Window",
                            "Minimize",
                            "Options",
                            "Language",
                            "Others",
                            "ShowInFinder",
                            "HideOthers",
                            "ShowAll",
                            "AboutPL",
                            "HidePL",
                            "QuitPL",
                            "AboutCPL",
                            "HideCPL",
                            "QuitCPL",
                            "AboutTalmerick",
                            "HideTalmerick",
                            "QuitTalmerick",
                            "AboutNimros",
                            "HideNimros",
                            "QuitNimros",
                            "AboutLumo",
                            "HideLumo",
                            "QuitLumo",
                            "AboutHastellVellumDesk",
                            "HideHastellVellumDesk",
                            "QuitHastellVellumDesk",
                            "AboutHastellVellumRoam",
                            "HideHastellVellumRoam",
                            "QuitHastellVellumRoam",
                            "AboutHastellRoamingLeafGATHER",
                            "HideHastellRoamingLeafGATHER",
                            "QuitHastellRoamingLeafGATHER",
                            "szWarning",
                            "NOInstallDS",
                            "Exit",
                            "ShowNoMem",
                            "NoDisplayImage",
                            "NoSaveImage",
                            "NotCorrectFolder",
                            "NoEnoughDiskSpace",
                            "SourceNotOpened",
                            "SelectScannerModel",
                            "ScannerModel",
                            "OK",
                            "Cancel"}) {
        ASSERT_TRUE(file.texts.contains(key)) << key;
        EXPECT_FALSE(file.texts.at(key).empty()) << key;
    }
}

TEST(Pictures, ComeAtOneAndAtTwoPixelsAPoint) {
    for (const char* name : {"Setup",
                             "Scan",
                             "Folder",
                             "OpenFolder",
                             "FitPage",
                             "ActualPage",
                             "Floppy",
                             "Floppy_PushDown",
                             "CollapsePagesPanel",
                             "CollapsePagesPanel_PushDown",
                             "eyedropper",
                             "EmptyPages",
                             "CPL"}) {
        const QImage normal(QString::fromStdString(resources + "/" + name + ".png"));
        QImage fine(QString::fromStdString(resources + "/" + name + "@2x.png"));
        ASSERT_FALSE(normal.isNull()) << name;
        ASSERT_FALSE(fine.isNull()) << name;
        EXPECT_EQ(normal.width(), normal.height()) << name;
        EXPECT_EQ(fine.size(), normal.size() * 2) << name;
    }
}

TEST(InfoPlist, NamesTheVersion) {
    const auto bytes = readFile(std::string(PAPERLINE_TEST_BUNDLE) + "/Contents/Info.plist");
    ASSERT_TRUE(bytes.has_value());
    const std::string text(bytes->begin(), bytes->end());
    EXPECT_NE(text.find("<key>CFBundleShortVersionString</key>\n\t<string>" PAPERLINE_TEST_VERSION
                        "</string>"),
              std::string::npos);
}

} // namespace
} // namespace paperline

#include "ui/SaveFolderText.h"

#include <gtest/gtest.h>

namespace paperline {
namespace {

TEST(AbsoluteFolderText, LeavesAnAbsolutePathAlone) {
    EXPECT_EQ(absoluteFolderText("/data/Scans/Image", "/home/kai"), "/data/Scans/Image");
    EXPECT_EQ(absoluteFolderText("/", "/home/kai"), "/");
    EXPECT_EQ(absoluteFolderText("", "/home/kai"), "");
}

TEST(AbsoluteFolderText, CountsEveryOtherTextFromTheHomeFolder) {
    EXPECT_EQ(absoluteFolderText("~/Documents/Image", "/home/kai"), "/home/kai/Documents/Image");
    EXPECT_EQ(absoluteFolderText("~/", "/home/kai"), "/home/kai/");
    EXPECT_EQ(absoluteFolderText("~", "/home/kai"), "/home/kai/");
    EXPECT_EQ(absoluteFolderText("Image", "/home/kai"), "/home/kai/Image");
    EXPECT_EQ(absoluteFolderText("Scans/", "/home/kai"), "/home/kai/Scans/");
    EXPECT_EQ(absoluteFolderText("~kai/Image", "/home/kai"), "/home/kai/~kai/Image");
    EXPECT_EQ(absoluteFolderText("Scans/Image", "/"), "/Scans/Image");
}

TEST(NameToCarryOver, IsTheLastPartOfTheFolderText) {
    EXPECT_EQ(nameToCarryOver("/home/kai/Documents/Invoices"), "Invoices");
}

TEST(NameToCarryOver, IsImageForATextThatEndsInASlash) {
    EXPECT_EQ(nameToCarryOver("/home/kai/Documents/"), "Image");
    EXPECT_EQ(nameToCarryOver("/"), "Image");
}

TEST(NameToCarryOver, IsEmptyForAnEmptyText) {
    EXPECT_EQ(nameToCarryOver(""), "");
}

TEST(ChosenFolderText, JoinsTheNameToTheFolder) {
    EXPECT_EQ(chosenFolderText("/Volumes/Disk/Scans", "Image", true), "/Volumes/Disk/Scans/Image");
    EXPECT_EQ(chosenFolderText("/", "Image", true), "/Image");
}

TEST(ChosenFolderText, IsTheBareFolderWhenNamesAreNotTakenFromTheField) {
    EXPECT_EQ(chosenFolderText("/Volumes/Disk/Scans", "Image", false), "/Volumes/Disk/Scans");
}

TEST(FolderOfPages, LiesAboveTheNamesTemplate) {
    EXPECT_EQ(folderOfPages("/home/kai/Documents/Image", true), "/home/kai/Documents");
}

TEST(FolderOfPages, IsTheTextItselfWithoutATemplate) {
    EXPECT_EQ(folderOfPages("/home/kai/Documents/", true), "/home/kai/Documents/");
    EXPECT_EQ(folderOfPages("/home/kai/Documents/Image", false), "/home/kai/Documents/Image");
}

} // namespace
} // namespace paperline

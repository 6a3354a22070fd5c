#include "dsm/InfoPlist.h"

#include "TestPlaces.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace paperline::dsm {
namespace {

using test::infoPlist;
using test::TestPlaces;
using test::writeText;

std::optional<BundleInfo> infoIn(std::string_view text) {
    return parseBundleInfo({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

TEST(InfoPlist, ReadsTheExecutableAmongEntriesOfEveryType) {
    const auto info = infoIn("\xef\xbb\xbf<?xml version=\"1.0\"?>\n"
                             "<!-- a comment with <key>CFBundleExecutable</key> -->\n"
                             "<plist version='1.0'><dict>\n"
                             "<key>Numbers</key><array><integer>1</integer></array>\n"
                             "<key>Empty</key><string/>\n"
                             "<key>Made</key><date>2024-01-01T00:00:00Z</date>\n"
                             "<key>Inner</key><dict><key>CFBundleExecutable</key>"
                             "<string>inner</string><key>x</key><dict/></dict>\n"
                             "<key>CFBundleExecutable</key><string>scan &amp; more</string>\n"
                             "<key>Yes</key><true/></dict></plist>");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->executable, "scan & more");
    EXPECT_FALSE(info->fallback);
}

TEST(InfoPlist, ReadsTheFallbackMarkInEveryFormThatSaysYes) {
    const auto fallback = [](const std::string& value) {
        const auto info = infoIn(infoPlist("x", "<key>PaperlineFallback</key>" + value));
        return info && info->fallback;
    };
    EXPECT_TRUE(fallback("<true/>"));
    EXPECT_TRUE(fallback("<true></true>"));
    EXPECT_TRUE(fallback("<string>YES</string>"));
    EXPECT_TRUE(fallback("<integer>1</integer>"));
    EXPECT_FALSE(fallback("<false/>"));
    EXPECT_FALSE(fallback("<string>no</string>"));
    EXPECT_FALSE(fallback("<array><true/></array>"));
}

TEST(InfoPlist, SkipsADeclarationWithAnInternalSubset) {
    const auto info = infoIn("<!DOCTYPE plist [ <!ELEMENT plist ANY> ]><plist><dict>"
                             "<key>CFBundleExecutable</key><string>x</string>"
                             "</dict></plist>");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->executable, "x");
}

TEST(InfoPlist, TakesNoTextThatEndsBeforeItsListDoes) {
    const std::string whole = infoPlist("source");
    const size_t end = whole.find("</plist>") + std::string("</plist>").size();
    for (size_t length = 0; length < end; ++length)
        EXPECT_FALSE(infoIn(whole.substr(0, length))) << length;
    EXPECT_TRUE(infoIn(whole.substr(0, end)));
}

TEST(InfoPlist, SurvivesEveryByteReplaced) {
    const std::string whole = infoPlist("source", "<key>A</key><dict><key>B</key><array/></dict>");
    for (size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'<', '>', '/', '[', '\0', '\xff', '-'}) {
            std::string damaged = whole;
            damaged[at] = byte;
            if (const auto info = infoIn(damaged)) {
                EXPECT_EQ(info->executable.find('/'), std::string::npos);
                EXPECT_FALSE(info->executable.empty());
            }
        }
    }
}

TEST(InfoPlist, TakesOnlyAPlainFileNameAsExecutable) {
    for (const char* name : {"", ".", "..", "../evil", "a/b", "/bin/true"})
        EXPECT_FALSE(infoIn(infoPlist(name))) << name;
    EXPECT_FALSE(infoIn(infoPlist(std::string("a\0b", 3))));
    EXPECT_FALSE(infoIn(infoPlist(std::string(256, 'x'))));
    EXPECT_FALSE(infoIn("<plist><dict/></plist>"));
    EXPECT_FALSE(infoIn("<plist><dict><key>CFBundleExecutable</key>"
                        "<array/></dict></plist>"));
    EXPECT_FALSE(infoIn("<plist><array/></plist>"));
    EXPECT_FALSE(infoIn("bplist00\xd1\x01\x02"));
}

TEST(InfoPlist, RefusesDeepNesting) {
    std::string deep;
    for (int i = 0; i < 20000; ++i)
        deep += "<array>";
    EXPECT_FALSE(infoIn(infoPlist("x", "<key>Deep</key>" + deep)));
    for (int i = 0; i < 20000; ++i)
        deep += "</array>";
    EXPECT_FALSE(infoIn(infoPlist("x", "<key>Deep</key>" + deep)));
}

TEST(InfoPlistFile, IsARegularFileOfBoundedSize) {
    const TestPlaces places;
    const auto file = places.folder() / "Info.plist";
    EXPECT_FALSE(readBundleInfo(file));
    writeText(file, infoPlist("source"));
    EXPECT_TRUE(readBundleInfo(file));
    writeText(file, infoPlist("source", std::string(largestInfoPlistBytes, ' ')));
    EXPECT_FALSE(readBundleInfo(file));
    EXPECT_FALSE(readBundleInfo(places.folder()));
    const auto pipe = places.folder() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(readBundleInfo(pipe)); // and it does not wait for a writer
}

} // namespace
} // namespace paperline::dsm

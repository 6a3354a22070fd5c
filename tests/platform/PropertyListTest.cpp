#include "platform/plist/PropertyList.h"

#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>
#include <limits>

namespace paperline {
namespace {

using namespace testing_support;

std::string inPlist(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           body + "\n</plist>\n";
}

std::optional<PropertyListDictionary> parse(const std::string& text) {
    return parsePropertyList(bytesOf(text));
}

// The value under "k" of a dictionary with that one element.
std::optional<PropertyListValue> parseValue(const std::string& element) {
    const auto root = parse(inPlist("<dict><key>k</key>" + element + "</dict>"));
    const PropertyListValue* value = root ? find(*root, "k") : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::string serialised(const PropertyListDictionary& root) {
    const auto bytes = serialisePropertyList(root);
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(nothing)";
}

bool survives(const PropertyListDictionary& root) {
    const auto bytes = serialisePropertyList(root);
    return bytes && parsePropertyList(*bytes) == root;
}

TEST(PropertyListXml, IsWrittenAsThePlatformWritesIt) {
    const PropertyListDictionary root{
        {"ScannerName", "Hastell 7 & <more>"},
        {"Language", PropertyListValue(int64_t{5})},
        {"ada",
         PropertyListValue(
             PropertyListDictionary{{"SavePath", "/home/ada/Bilder/\xC3\x84"},
                                    {"List",
                                     PropertyListValue(PropertyListArray{
                                         PropertyListValue(true), PropertyListValue(false)})}})}};
    EXPECT_EQ(serialised(root),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n"
              "<dict>\n"
              "\t<key>Language</key>\n"
              "\t<integer>5</integer>\n"
              "\t<key>ScannerName</key>\n"
              "\t<string>Hastell 7 &amp; &lt;more&gt;</string>\n"
              "\t<key>ada</key>\n"
              "\t<dict>\n"
              "\t\t<key>List</key>\n"
              "\t\t<array>\n"
              "\t\t\t<true/>\n"
              "\t\t\t<false/>\n"
              "\t\t</array>\n"
              "\t\t<key>SavePath</key>\n"
              "\t\t<string>/home/ada/Bilder/\xC3\x84</string>\n"
              "\t</dict>\n"
              "</dict>\n"
              "</plist>\n");
}

TEST(PropertyListXml, IsReadWithEveryType) {
    const auto root = parse(inPlist("<dict>"
                                    "<key>s</key><string> a &#x41;&#66; &lt;&amp;&gt; </string>"
                                    "<key>i</key><integer>-42</integer>"
                                    "<key>u</key><integer>18446744073709551615</integer>"
                                    "<key>r</key><real>0.25</real>"
                                    "<key>t</key><true/><key>f</key><false/>"
                                    "<key>d</key><date>2026-01-16T14:25:30Z</date>"
                                    "<key>b</key><data>\n\tAAEC\n\t/w==\n\t</data>"
                                    "<key>a</key><array><integer>1</integer><array/></array>"
                                    "<key>e</key><dict/>"
                                    "</dict>"));
    ASSERT_TRUE(root.has_value());
    const PropertyListDictionary expected{
        {"s", " a AB <&> "},
        {"i", PropertyListValue(int64_t{-42})},
        {"u", PropertyListValue(std::numeric_limits<uint64_t>::max())},
        {"r", PropertyListValue(PropertyListOther{"real", "0.25"})},
        {"t", PropertyListValue(true)},
        {"f", PropertyListValue(false)},
        {"d", PropertyListValue(PropertyListOther{"date", "2026-01-16T14:25:30Z"})},
        {"b", PropertyListValue(PropertyListOther{"data", "\n\tAAEC\n\t/w==\n\t"})},
        {"a",
         PropertyListValue(PropertyListArray{PropertyListValue(int64_t{1}),
                                             PropertyListValue(PropertyListArray{})})},
        {"e", PropertyListValue(PropertyListDictionary{})}};
    EXPECT_EQ(*root, expected);
    EXPECT_TRUE(survives(expected));
}

TEST(PropertyListXml, KeepsNumbersToTheLastDigit) {
    PropertyListDictionary root;
    for (const int64_t number : {INT64_MIN, int64_t{-1}, int64_t{0}, INT64_MAX})
        root.emplace("i" + std::to_string(root.size()), PropertyListValue(number));
    EXPECT_TRUE(survives(root)) << serialised(root);
}

TEST(PropertyListXml, KeepsRealsDatesAndDataAsTheyAreWritten) {
    for (const char* element : {"<real>3.141592653589793</real>",
                                "<date>2026-02-29T00:00:00Z</date>",
                                "<real>1e999</real>",
                                "<date>0001-01-01T00:00:00Z</date>",
                                "<data>AA*=</data>"}) {
        const auto value = parseValue(element);
        ASSERT_TRUE(value.has_value()) << element;
        EXPECT_NE(serialised({{"k", *value}}).find(element), std::string::npos) << element;
    }
}

TEST(PropertyListXml, TakesWhatOtherWritersWrite) {
    EXPECT_TRUE(parse("\xEF\xBB\xBF" + inPlist("<dict/>")).has_value()); // a mark in front
    EXPECT_TRUE(parse("<plist version=\"1.0\"><dict/></plist>").has_value());
    EXPECT_TRUE(parse(inPlist("<!-- a note --><dict><!-- another --></dict>")).has_value());
    EXPECT_EQ(parseValue("<string><![CDATA[a<b]]></string>"), PropertyListValue("a<b"));
    EXPECT_EQ(parseValue("<string></string>"), PropertyListValue(""));
    EXPECT_EQ(parseValue("<string/>"), PropertyListValue(""));
    EXPECT_EQ(parseValue("<true></true>"), PropertyListValue(true));
    EXPECT_EQ(parseValue("<integer> 0x1F </integer>"), PropertyListValue(int64_t{31}));
    EXPECT_EQ(parseValue("<integer>+7</integer>"), PropertyListValue(int64_t{7}));
    EXPECT_EQ(parseValue("<integer>010</integer>"), PropertyListValue(int64_t{10}));
    EXPECT_EQ(parseValue("<string note=\"b\">x</string>"), PropertyListValue("x"));
    const std::string utf16 = "\xFE\xFF" + [](const std::string& ascii) {
        std::string wide;
        for (const char character : ascii)
            wide.append(1, '\0').append(1, character);
        return wide;
    }("<plist><dict><key>k</key><string>v</string></dict></plist>");
    EXPECT_EQ(parse(utf16), (PropertyListDictionary{{"k", "v"}}));
    EXPECT_EQ(parse("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><dict><key>k</key>"
                    "<string>\xE4</string></dict></plist>"),
              (PropertyListDictionary{{"k", "\xC3\xA4"}}));
    EXPECT_EQ(parseValue("<string>\t\n</string>"), PropertyListValue("\t\n"));
}

TEST(PropertyListXml, RefusesDamagedValues) {
    for (const char* element : {"<integer>12abc</integer>",
                                "<integer></integer>",
                                "<integer>- 5</integer>",
                                "<integer>1.5</integer>",
                                "<integer>18446744073709551616</integer>",
                                "<integer>-9223372036854775809</integer>",
                                "<string>\xFF</string>",
                                "<string>\x01</string>",
                                "<string>&#0;</string>",
                                "<string>&#xD800;</string>",
                                "<string>&nbsp;</string>",
                                "<string>a & b</string>",
                                "<key>k</key>",
                                "<unknown/>",
                                "<true>x</true>",
                                "<integer/>",
                                "text",
                                ""})
        EXPECT_FALSE(parseValue(element).has_value()) << element;
}

TEST(PropertyListXml, RefusesBrokenStructure) {
    using namespace std::string_literals;
    for (const std::string& text : {""s,
                                    " "s,
                                    "bplist00"s,
                                    "<plist>"s,
                                    "<plist/>"s,
                                    "<plist><dict></plist>"s,
                                    inPlist("<array/>"),
                                    inPlist("<string>x</string>"),
                                    inPlist(""),
                                    inPlist("<dict/><dict/>"),
                                    inPlist("<dict><key>a</key></dict>"),
                                    inPlist("<dict><string>x</string></dict>"),
                                    inPlist("<dict>text</dict>"),
                                    inPlist("<dict><key>a</key><key>b</key></dict>"),
                                    inPlist("<dict><array></dict></array>"),
                                    inPlist("<dict/>") + "behind",
                                    inPlist("<dict/><!-- open"),
                                    "{ a = 1; }"s,
                                    "{\"a\": 1}"s,
                                    inPlist("<dict><key>a"s + '\0' + "b</key><true/></dict>"),
                                    "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><dict/></plist>"s})
        EXPECT_FALSE(parse(text).has_value()) << text;
}

std::string nested(int levels) {
    std::string text;
    for (int level = 0; level < levels; ++level)
        text += "<dict><key>a</key>";
    text += "<true/>";
    for (int level = 0; level < levels; ++level)
        text += "</dict>";
    return inPlist(text);
}

TEST(PropertyListXml, BoundsItsNesting) {
    EXPECT_TRUE(parse(nested(60)).has_value());
    EXPECT_FALSE(parse(nested(65)).has_value());
    EXPECT_FALSE(parse(nested(200'000)).has_value());
    PropertyListValue value(true);
    for (int level = 0; level < 100; ++level)
        value = PropertyListValue(PropertyListDictionary{{"a", value}});
    EXPECT_FALSE(serialisePropertyList(*value.asDictionary()).has_value());
}

TEST(PropertyListXml, WritesOnlyWhatXmlCanHold) {
    for (const char* text : {"\x01", "\x1F", "\xFF", "\xC3", "\xEF\xBF\xBF", "\xED\xA0\x80"}) {
        EXPECT_FALSE(serialisePropertyList({{"k", text}}).has_value()) << text;
        EXPECT_FALSE(serialisePropertyList({{text, "v"}}).has_value()) << text;
    }
    const std::string zero("a\0b", 3);
    EXPECT_FALSE(serialisePropertyList({{zero, "v"}}).has_value());
    EXPECT_FALSE(serialisePropertyList({{"k", PropertyListValue(zero)}}).has_value());
    EXPECT_TRUE(survives({{"\t\r\n\x7F", "\t\r\n\xF0\x9F\x98\x80"}, {"", "empty key"}}));
}

TEST(PropertyListInteger, IsReadFromNumbersAndTexts) {
    EXPECT_EQ(PropertyListValue(int64_t{-3}).asInteger(), -3);
    EXPECT_EQ(PropertyListValue(uint64_t{3}).asInteger(), 3);
    EXPECT_EQ(PropertyListValue(UINT64_MAX).asInteger(), std::nullopt);
    EXPECT_EQ(PropertyListValue(true).asInteger(), 1);
    const auto real = [](const char* text) {
        return PropertyListValue(PropertyListOther{"real", text}).asInteger();
    };
    EXPECT_EQ(real("-2.9"), -2);
    EXPECT_EQ(real("1e30"), std::nullopt);
    EXPECT_EQ(real("nan"), std::nullopt);
    EXPECT_EQ(real("many"), std::nullopt);
    EXPECT_EQ(PropertyListValue("3").asInteger(), 3);
    EXPECT_EQ(PropertyListValue(" +7 ").asInteger(), 7);
    EXPECT_EQ(PropertyListValue("-12abc").asInteger(), -12);
    EXPECT_EQ(PropertyListValue("12abc").asInteger(), 12);
    for (const char* text : {"", "abc", "+", "-", "+-3", "99999999999999999999"})
        EXPECT_EQ(PropertyListValue(text).asInteger(), std::nullopt) << text;
    EXPECT_EQ(PropertyListValue(PropertyListArray{}).asInteger(), std::nullopt);
    EXPECT_EQ(PropertyListValue(PropertyListOther{"date", "3"}).asInteger(), std::nullopt);
}

TEST(PropertyListFile, TellsMissingFromDamaged) {
    const TestFolder folder;
    EXPECT_EQ(readPropertyList(folder / "none").status, PropertyListStatus::missing);
    ASSERT_TRUE(put(folder / "empty", ""));
    EXPECT_EQ(readPropertyList(folder / "empty").status, PropertyListStatus::damaged);
    ASSERT_TRUE(put(folder / "array", inPlist("<array/>")));
    EXPECT_EQ(readPropertyList(folder / "array").status, PropertyListStatus::damaged);
    EXPECT_EQ(readPropertyList(folder.path()).status, PropertyListStatus::damaged);
    ASSERT_EQ(::symlink("nothing", (folder / "dangling").c_str()), 0);
    EXPECT_EQ(readPropertyList(folder / "dangling").status, PropertyListStatus::missing);
}

TEST(PropertyListFile, KeepsUnknownEntriesThroughAnUpdate) {
    const TestFolder folder;
    const std::string path = folder / "settings.plist";
    ASSERT_TRUE(put(path,
                    inPlist("<dict><key>Future</key><array><date>2030-05-06T07:08:09Z</date>"
                            "<data>AAEC</data><real>1.5</real></array>"
                            "<key>user</key><dict><key>Other</key><true/></dict></dict>")));
    PropertyListFile file = readPropertyList(path);
    ASSERT_EQ(file.status, PropertyListStatus::read);
    const PropertyListDictionary before = file.root;
    PropertyListDictionary user = *find(file.root, "user")->asDictionary();
    user.insert_or_assign("Language", PropertyListValue(int64_t{3}));
    file.root.insert_or_assign("user", PropertyListValue(user));
    ASSERT_TRUE(writePropertyListAtomically(path, file.root));
    const PropertyListFile again = readPropertyList(path);
    EXPECT_EQ(again.root, file.root);
    EXPECT_EQ(*find(again.root, "Future"), before.at("Future"));
    EXPECT_EQ(find(*find(again.root, "user")->asDictionary(), "Other")->asInteger(), 1);
    EXPECT_EQ(find(again.root, "absent"), nullptr);
}

TEST(PropertyListFile, StaysWhenTheNewContentCannotBeWritten) {
    const TestFolder folder;
    const std::string path = folder / "settings.plist";
    ASSERT_TRUE(put(path, "old"));
    EXPECT_FALSE(writePropertyListAtomically(path, {{"k", "\x01"}}));
    EXPECT_EQ(textOf(path), "old");
}

} // namespace
} // namespace paperline

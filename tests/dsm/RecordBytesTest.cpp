// The records of both layouts, byte by byte.
#include "twain/manager/TwainRecords.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

namespace paperline {
namespace {

namespace abi = twain::abi;

// Bytes in hexadecimal, blanks left out; ".." is a byte that belongs to no field.
struct Layout {
    explicit Layout(const std::string& text) {
        std::string digits;
        for (const char digit : text)
            if (digit != ' ')
                digits += digit;
        for (size_t i = 0; i + 1 < digits.size(); i += 2) {
            const std::string pair = digits.substr(i, 2);
            padding.push_back(pair == "..");
            bytes.push_back(static_cast<char>(pair == ".." ? 0 : std::stoi(pair, nullptr, 16)));
        }
    }

    std::string bytes;
    std::vector<bool> padding;
};

std::string hex(const std::string& bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += {digits[value >> 4], digits[value & 15], ' '};
    }
    return text;
}

template <class Record> Record recordOf(const std::string& bytes) {
    EXPECT_EQ(bytes.size(), sizeof(Record));
    Record record{};
    std::memcpy(&record, bytes.data(), std::min(bytes.size(), sizeof(Record)));
    return record;
}

template <class Record> std::string bytesOf(const Record& record) {
    std::string bytes(sizeof(Record), '\0');
    std::memcpy(bytes.data(), &record, sizeof(Record));
    return bytes;
}

template <class Own> void expectSame(const std::string& own, const std::string& standard) {
    const Layout ownLayout(own);
    const Layout standardLayout(standard);
    const auto converted = toStandard(recordOf<Own>(ownLayout.bytes));
    EXPECT_EQ(hex(bytesOf(converted)), hex(standardLayout.bytes));
    using Standard = std::remove_const_t<decltype(converted)>;
    std::string back = bytesOf(fromStandard(recordOf<Standard>(standardLayout.bytes)));
    for (size_t i = 0; i < back.size(); ++i)
        if (ownLayout.padding[i])
            back[i] = 0;
    EXPECT_EQ(hex(back), hex(ownLayout.bytes));
}

std::string zeros(size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += "00";
    return text;
}

TEST(RecordBytes, IdentityHasTextWithALengthOnOneSideAndWithAZeroOnTheOther) {
    // Id, version 1.2, language 13, country 1, "1.00", protocol 1.9, groups 3, "AB", "C", "DEF"
    expectSame<TW_IDENTITY>("7856341200000000 0100 0200 0d00 0100 04312e3030" + zeros(29) +
                                "0100 0900 .... 03000000 024142" + zeros(31) + "0143" + zeros(32) +
                                "03444546" + zeros(30) + "............",
                            "78563412 0100 0200 0d00 0100 312e303000" + zeros(29) +
                                "0100 0900 03000000 414200" + zeros(31) + "4300" + zeros(32) +
                                "44454600" + zeros(30));
}

TEST(RecordBytes, IdentityKeepsTheLongestText) {
    TW_IDENTITY own{};
    own.ProductName = TW_STR32::from(std::string(33, 'x'));
    const abi::Identity standard = toStandard(own);
    EXPECT_EQ(std::string(standard.ProductName, 34), std::string(33, 'x') + '\0');
    EXPECT_EQ(fromStandard(standard).ProductName, own.ProductName);
}

TEST(RecordBytes, IdentityEndsTextThatIsTooLong) {
    TW_IDENTITY own{};
    for (TW_STR32* text :
         {&own.Version.Info, &own.Manufacturer, &own.ProductFamily, &own.ProductName}) {
        text->bytes.fill('y');
        text->bytes[0] = 255; // a length that the field has no room for
    }
    const abi::Identity ended = toStandard(own);
    const std::string text = std::string(33, 'y') + '\0';
    EXPECT_EQ(std::string(ended.Version.Info, 34), text);
    EXPECT_EQ(std::string(ended.Manufacturer, 34), text);
    EXPECT_EQ(std::string(ended.ProductFamily, 34), text);
    EXPECT_EQ(std::string(ended.ProductName, 34), text);

    abi::Identity standard{};
    std::memset(standard.ProductName, 'z', sizeof(standard.ProductName));
    const TW_STR32 name = fromStandard(standard).ProductName;
    EXPECT_EQ(name.bytes[0], 33);
    EXPECT_EQ(name.text(), std::string(33, 'z'));
}

std::string nameFromStandard(const std::string& bytes) {
    abi::Identity standard{};
    std::memcpy(standard.ProductName, bytes.data(), std::min(bytes.size(), sizeof(abi::Str32)));
    return fromStandard(standard).ProductName.text();
}

TEST(RecordBytes, TextThatIsNoUtf8IsTakenForLatin1) {
    EXPECT_EQ(nameFromStandard("Stra\xdf"
                               "e \xae"),
              "Straße ®");
    EXPECT_EQ(nameFromStandard("Straße ®"), "Straße ®");
    EXPECT_EQ(nameFromStandard("\xff\x80"), "ÿ\xc2\x80");
    // What grows beyond the field is cut before a character.
    EXPECT_EQ(nameFromStandard(std::string(33, '\xe9')), nameFromStandard(std::string(16, '\xe9')));
}

TEST(RecordBytes, TextCutOffInsideACharacterLosesItOnly) {
    EXPECT_EQ(nameFromStandard(std::string(30, 'x') + "ä漢"), std::string(30, 'x') + "ä");
    EXPECT_EQ(nameFromStandard(std::string(32, 'x') + "ä"), std::string(32, 'x'));
    EXPECT_EQ(nameFromStandard(std::string(30, 'x') + "\xf0\x9f\x98"), std::string(30, 'x'));
    EXPECT_EQ(nameFromStandard("short \xe9"), "short é") << "a field with room is not cut off";
}

TEST(RecordBytes, IdentityTakesOnlyTheLowHalfOfAWideNumber) {
    TW_IDENTITY own{};
    own.Id = 0xffffffff00000007;
    EXPECT_EQ(+toStandard(own).Id, 7U);
}

TEST(RecordBytes, TextEndsAtAZeroInsideIt) {
    TW_IDENTITY own{};
    own.Manufacturer = TW_STR32::from(std::string("ab\0cd", 5));
    EXPECT_EQ(hex(std::string(toStandard(own).Manufacturer, 6)), "61 62 00 00 00 00 ");
}

TEST(RecordBytes, UserInterface) {
    expectSame<TW_USERINTERFACE>("0100 0200 ........ 8877665544332211",
                                 "0100 0200 8877665544332211");
}

TEST(RecordBytes, ImageInfo) {
    expectSame<TW_IMAGEINFO>("2c01 0000 9600 0080 a0090000 b40d0000 0300"
                             "0800 0900 0a00 0b00 0c00 0d00 0e00 0f00 1800 0100 0200 ffff ....",
                             "2c01 0000 9600 0080 a0090000 b40d0000 0300"
                             "0800 0900 0a00 0b00 0c00 0d00 0e00 0f00 1800 0100 0200 ffff");
    expectSame<TW_IMAGEINFO>(
        "ffff 0000 0000 0000 ffffffff 00000080 ffff" + zeros(16) + "0100 0000 0000 0000 ....",
        "ffff 0000 0000 0000 ffffffff 00000080 ffff" + zeros(16) + "0100 0000 0000 0000");
}

TEST(RecordBytes, ImageMemoryTransfer) {
    expectSame<TW_IMAGEMEMXFER>(
        "ffff .... 01000000 02000000 03000000 04000000 05000000 06000000 ........"
        "09000000 00001000 0807060504030201",
        "ffff 01000000 02000000 03000000 04000000 05000000 06000000"
        "09000000 00001000 0807060504030201");
}

TEST(RecordBytes, PendingTransfers) {
    expectSame<TW_PENDINGXFERS>("ffff .... 04030201", "ffff 04030201");
}

TEST(RecordBytes, MemorySetupAndStatusAreTheSame) {
    expectSame<TW_SETUPMEMXFER>("01000000 02000000 fffffffe", "01000000 02000000 fffffffe");
    expectSame<TW_STATUS>("0b00 0700", "0b00 0700");
}

TEST(RecordBytes, FileSetup) {
    expectSame<TW_SETUPFILEXFER>("042f612e62" + zeros(251) + "0200 feff",
                                 "2f612e6200" + zeros(251) + "0200 feff");
}

TEST(RecordBytes, FileSetupTakesTheLongestName) {
    TW_SETUPFILEXFER own{};
    own.FileName.fill('n');
    own.FileName[0] = 255;
    const abi::SetupFileXfer standard = toStandard(own);
    EXPECT_EQ(std::string(standard.FileName, 256), std::string(255, 'n') + '\0');
    EXPECT_EQ(fromStandard(standard).FileName, own.FileName);
}

TEST(RecordBytes, FileSetupEndsANameWithoutAZero) {
    abi::SetupFileXfer standard{};
    std::memset(standard.FileName, 'n', sizeof(standard.FileName));
    const TW_SETUPFILEXFER own = fromStandard(standard);
    EXPECT_EQ(own.FileName[0], 255);
    EXPECT_EQ(own.FileName[255], 'n');
}

// Two records of extended information; more than the declared one follow the header.
struct TwoInfos {
    std::array<uint64_t, 5> room{}; // aligned as TW_EXTIMAGEINFO is
    TW_EXTIMAGEINFO& record() { return *reinterpret_cast<TW_EXTIMAGEINFO*>(room.data()); }
    std::string bytes() const { return bytesOf(room); }
};

TEST(RecordBytes, ExtendedImageInfo) {
    TwoInfos own;
    const Layout layout("02000000 ........ 0112 0400 0100 0000 efcdab8967452301"
                        "0212 0500 0200 0a00 1122334455667788");
    std::memcpy(own.room.data(), layout.bytes.data(), layout.bytes.size());
    const auto standard = toStandard(own.record());
    ASSERT_TRUE(standard);
    EXPECT_EQ(hex(std::string(standard->begin(), standard->end())),
              hex(Layout("02000000 0112 0400 0100 0000 efcdab8967452301"
                         "0212 0500 0200 0a00 1122334455667788")
                      .bytes));
    TwoInfos back;
    back.record().NumInfos = 2;
    fromStandard(*standard, back.record());
    EXPECT_EQ(hex(back.bytes()), hex(layout.bytes));
}

TEST(RecordBytes, ExtendedImageInfoNeverOutgrowsTheApplicationsRoom) {
    TwoInfos own;
    own.record().NumInfos = 2;
    auto standard = toStandard(own.record());
    ASSERT_TRUE(standard);
    (*standard)[1] = 0xff; // the source claims 65282 records
    fromStandard(*standard, own.record());
    EXPECT_EQ(own.record().NumInfos, 2U);
    (*standard)[0] = 1;
    (*standard)[1] = 0;
    fromStandard(*standard, own.record());
    EXPECT_EQ(own.record().NumInfos, 1U);
    own.record().NumInfos = 4097;
    EXPECT_FALSE(toStandard(own.record()));
    own.record().NumInfos = 0;
    ASSERT_TRUE(toStandard(own.record()));
    EXPECT_EQ(toStandard(own.record())->size(), 4U);
}

} // namespace
} // namespace paperline

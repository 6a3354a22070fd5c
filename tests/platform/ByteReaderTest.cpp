#include "platform/files/ByteReader.h"

#include "platform/files/FileContent.h"
#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>

#include <array>

namespace paperline {
namespace {

using namespace testing_support;
using Bytes = std::vector<uint8_t>;

TEST(ByteOrder, ReadsAndWritesBothOrders) {
    const Bytes bytes{1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(readInteger<uint8_t>(bytes, std::endian::big), 1);
    EXPECT_EQ(readInteger<uint16_t>(bytes, std::endian::big), 0x0102);
    EXPECT_EQ(readInteger<uint16_t>(bytes, std::endian::little), 0x0201);
    EXPECT_EQ(readInteger<uint32_t>(bytes, std::endian::big), 0x01020304U);
    EXPECT_EQ(readInteger<uint32_t>(bytes, std::endian::little), 0x04030201U);
    EXPECT_EQ(readInteger<uint64_t>(bytes, std::endian::big), 0x0102030405060708U);
    Bytes written(5);
    writeInteger(std::span(written), std::endian::big, uint32_t{0xA1B2C3D4});
    EXPECT_EQ(written, (Bytes{0xA1, 0xB2, 0xC3, 0xD4, 0}));
    writeInteger(std::span(written), std::endian::little, uint16_t{0x0102});
    EXPECT_EQ(written, (Bytes{2, 1, 0xC3, 0xD4, 0}));
}

void expectBytesOf(ByteReader& reader, const Bytes& all) {
    EXPECT_EQ(reader.byte(0), all[0]);
    EXPECT_EQ(reader.byte(all.size() - 1), all.back());
    EXPECT_FALSE(reader.byte(all.size()));
    EXPECT_FALSE(reader.number<uint32_t>(all.size() - 3, std::endian::big));
    EXPECT_FALSE(reader.byte(UINT64_MAX));
    EXPECT_FALSE(reader.number<uint64_t>(UINT64_MAX - 3, std::endian::big));
    // Back and forth, and more than the buffer at once.
    for (const size_t offset : {size_t{9000}, size_t{3}, size_t{4094}, size_t{4095}}) {
        const auto found = reader.bytes(offset, 5000);
        const auto start = all.begin() + static_cast<ptrdiff_t>(offset);
        EXPECT_EQ(Bytes(found.begin(), found.end()), Bytes(start, start + 5000)) << offset;
    }
    EXPECT_TRUE(reader.bytes(3, all.size() - 2).empty());
}

TEST(ByteReader, FindsTheSameBytesInAFileAndInMemory) {
    Bytes all(20'000);
    for (size_t at = 0; at < all.size(); ++at)
        all[at] = static_cast<uint8_t>(at * 7 + at / 256);
    const TestFolder folder;
    ASSERT_TRUE(writeFile(folder / "file", all));
    ByteReader file(folder / "file");
    ByteReader memory{std::span<const uint8_t>(all)};
    expectBytesOf(file, all);
    expectBytesOf(memory, all);
}

TEST(ByteReader, ComparesTexts) {
    const Bytes bytes{'a', 'b', 0, 0xFF};
    ByteReader reader{std::span<const uint8_t>(bytes)};
    EXPECT_TRUE(reader.hasText(1, std::string_view("b\0\xFF", 3)));
    EXPECT_FALSE(reader.hasText(0, "b"));
    EXPECT_FALSE(reader.hasText(3, "\xFF\xFF"));
}

TEST(ByteReader, HasNoBytesWithoutARegularFile) {
    const TestFolder folder;
    for (const std::string& path : {folder / "missing", folder.path()})
        EXPECT_FALSE(ByteReader(path).byte(0)) << path;
}

} // namespace
} // namespace paperline

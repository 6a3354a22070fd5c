#include "codecs/png/PngRowReader.h"

#include "PagePictures.h"
#include "PngChunks.h"
#include "codecs/png/PngCodec.h"
#include "codecs/png/PngWriter.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace paperline {
namespace {

using namespace testing_support;

constexpr uint64_t manyPixels = 1U << 24U;

struct Rows {
    uint32_t width = 1;
    uint32_t height = 1;
    uint8_t samples = 1;
    Bytes filtered; // each row starts with its filter's number
};

// Large enough to be opened chunk by chunk.
Rows noiseRows(uint32_t width, uint8_t samples, const std::vector<uint8_t>& filters) {
    std::mt19937 random(width * 7 + samples);
    Rows rows{width, 0, samples, {}};
    while (rows.filtered.size() < 530'000) {
        rows.filtered.push_back(filters[rows.height++ % filters.size()]);
        for (uint32_t x = 0; x < width * samples; ++x)
            rows.filtered.push_back(static_cast<uint8_t>(random()));
    }
    return rows;
}

uint32_t adler(const Bytes& bytes) {
    uint32_t a = 1;
    uint32_t b = 0;
    for (const uint8_t byte : bytes) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    return b << 16U | a;
}

// Chunks of stored data, so many rows' bytes in each.
std::vector<PngChunk> chunksOfRows(const Rows& rows, size_t pieceBytes) {
    Bytes header = bigEndian(rows.width);
    append(header, bigEndian(rows.height));
    append(header, {8, static_cast<uint8_t>(rows.samples == 3 ? 2 : 0), 0, 0, 0});
    std::vector<PngChunk> chunks{{"IHDR", header}};
    for (size_t at = 0; at < rows.filtered.size(); at += pieceBytes) {
        const size_t size = std::min(pieceBytes, rows.filtered.size() - at);
        const bool isLast = at + size == rows.filtered.size();
        Bytes content = at == 0 ? Bytes{0x78, 0x01} : Bytes{};
        append(content,
               {static_cast<uint8_t>(isLast),
                static_cast<uint8_t>(size),
                static_cast<uint8_t>(size >> 8U),
                static_cast<uint8_t>(~size),
                static_cast<uint8_t>(~size >> 8U)});
        const auto begin = rows.filtered.begin() + static_cast<ptrdiff_t>(at);
        content.insert(content.end(), begin, begin + static_cast<ptrdiff_t>(size));
        if (isLast)
            append(content, bigEndian(adler(rows.filtered)));
        chunks.push_back({"IDAT", content});
    }
    chunks.push_back({"IEND", {}});
    return chunks;
}

Bytes fileOfRows(const Rows& rows, size_t pieceBytes = 60'000) {
    return fileOf(chunksOfRows(rows, pieceBytes));
}

// In one chunk: by the library.
Bytes joined(const Bytes& file) {
    return cutElsewhere(file, file.size());
}

bool isReadHere(const Bytes& file) {
    const std::unique_ptr<PngRowReader> reader = openPngRows(file, manyPixels);
    if (!reader)
        return false;
    for (int32_t y = 0; y < reader->layout().heightPixels; ++y)
        if (reader->next().empty())
            return false;
    return reader->isComplete();
}

void expectAsByTheLibrary(const Bytes& file) {
    const auto here = decodePng(file, manyPixels);
    const auto there = decodePng(joined(file), manyPixels);
    ASSERT_EQ(here.has_value(), there.has_value());
    if (here)
        expectSamePixels(*there->image, *here->image);
}

TEST(PngRowReader, UndoesEveryFilterInEveryRow) {
    for (const uint8_t samples : {uint8_t{1}, uint8_t{3}}) {
        for (uint8_t filter = 0; filter < 5; ++filter) {
            const Bytes file = fileOfRows(noiseRows(301, samples, {filter}));
            EXPECT_TRUE(isReadHere(file)) << int{filter};
            expectAsByTheLibrary(file);
        }
        const Bytes file = fileOfRows(noiseRows(299, samples, {4, 3, 2, 4, 1, 3, 0, 4, 4, 3, 3}));
        EXPECT_TRUE(isReadHere(file));
        expectAsByTheLibrary(file);
    }
}

TEST(PngRowReader, NarrowPages) {
    for (const uint8_t samples : {uint8_t{1}, uint8_t{3}})
        for (const uint32_t width : {1U, 2U, 3U, 5U}) {
            const Bytes file = fileOfRows(noiseRows(width, samples, {4, 3, 4, 1, 2, 0}));
            EXPECT_TRUE(isReadHere(file)) << width;
            expectAsByTheLibrary(file);
        }
}

TEST(PngRowReader, RowsMayBeginAnywhereInAChunk) {
    const Rows rows = noiseRows(4001, 3, {3, 4});
    for (const size_t pieceBytes : {size_t{1777}, size_t{12'004}, size_t{12'005}, size_t{65'535}}) {
        const Bytes file = fileOfRows(rows, pieceBytes);
        EXPECT_TRUE(isReadHere(file)) << pieceBytes;
        expectAsByTheLibrary(file);
    }
}

TEST(PngRowReader, ValuesThatAPersonCanCheck) {
    Rows rows{2, 0, 3, {}};
    const std::vector<Bytes> first{{3, 10, 20, 30, 5, 5, 5},     // means with what is left
                                   {4, 1, 1, 1, 0, 0, 0},        // above, as nothing is left
                                   {3, 0, 0, 0, 250, 250, 250}}; // both, modulo 256
    for (const Bytes& row : first)
        append(rows.filtered, row);
    rows.height = 3;
    for (; rows.filtered.size() < 530'000; ++rows.height)
        append(rows.filtered, Bytes(7, 0));
    const Bytes file = fileOfRows(rows);
    ASSERT_TRUE(isReadHere(file));
    const auto picture = decodePng(file, manyPixels);
    ASSERT_TRUE(picture.has_value());
    const auto row = [&](int32_t y) {
        const auto bytes = picture->image->row(y);
        return Bytes(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(row(0), (Bytes{10, 20, 30, 10, 15, 20}));
    // Left, above and corner of the second pixel: 11, 10, 10 and so on; left is nearest.
    EXPECT_EQ(row(1), (Bytes{11, 21, 31, 11, 15, 20}));
    EXPECT_EQ(row(2), (Bytes{5, 10, 15, 2, 6, 11}));
}

TEST(PngRowReader, ThereAreFiveFilters) {
    for (const uint8_t filter : {uint8_t{5}, uint8_t{64}, uint8_t{255}}) {
        Rows rows = noiseRows(300, 3, {0});
        rows.filtered[901 * 500] = filter;
        EXPECT_FALSE(isReadHere(fileOfRows(rows)));
        EXPECT_FALSE(decodePng(fileOfRows(rows), manyPixels).has_value()) << int{filter};
    }
}

TEST(PngRowReader, TooFewRowsGiveNothingAndTooManyAreLeft) {
    Rows rows = noiseRows(300, 3, {4});
    ++rows.height;
    EXPECT_FALSE(decodePng(fileOfRows(rows), manyPixels).has_value());
    rows.height -= 2;
    const Bytes file = fileOfRows(rows);
    EXPECT_FALSE(isReadHere(file));
    EXPECT_TRUE(decodePng(file, manyPixels).has_value());
    expectAsByTheLibrary(file);
}

TEST(PngRowReader, ChecksumsMustBeRight) {
    std::vector<PngChunk> chunks = chunksOfRows(noiseRows(300, 3, {4}), 60'000);
    PngChunk& last = chunks[chunks.size() - 2];
    last.content.back() ^= 1U;
    EXPECT_FALSE(isReadHere(fileOf(chunks)));
    EXPECT_FALSE(decodePng(fileOf(chunks), manyPixels).has_value());
    Bytes file = fileOfRows(noiseRows(300, 3, {4}));
    file[file.size() / 2] ^= 1U; // its chunk's checksum stays
    EXPECT_FALSE(isReadHere(file));
    EXPECT_FALSE(decodePng(file, manyPixels).has_value());
}

TEST(PngRowReader, OtherLayoutsAreLeftToTheLibrary) {
    const Rows rows = noiseRows(300, 3, {4});
    const auto changed = [&](size_t at, uint8_t value) {
        std::vector<PngChunk> chunks = chunksOfRows(rows, 60'000);
        chunks.front().content[at] = value;
        return fileOf(chunks);
    };
    EXPECT_NE(openPngRows(fileOfRows(rows), manyPixels), nullptr);
    EXPECT_EQ(openPngRows(changed(8, 16), manyPixels), nullptr); // bits
    EXPECT_EQ(openPngRows(changed(9, 6), manyPixels), nullptr);  // with alpha
    EXPECT_EQ(openPngRows(changed(12, 1), manyPixels), nullptr); // interlaced
    std::vector<PngChunk> chunks = chunksOfRows(rows, 60'000);
    chunks.insert(chunks.begin() + 1, {"tRNS", {0, 1, 0, 2, 0, 3}});
    EXPECT_EQ(openPngRows(fileOf(chunks), manyPixels), nullptr);
    EXPECT_TRUE(decodePng(fileOf(chunks), manyPixels).has_value());
    EXPECT_EQ(openPngRows(fileOfRows(rows), 1000), nullptr);
    EXPECT_FALSE(decodePng(fileOfRows(rows), 1000).has_value());
}

TEST(PngRowReader, VeryLongRowsAreLeftToTheLibrary) {
    const Bytes file = fileOfRows(noiseRows(1'400'000, 3, {3}));
    EXPECT_EQ(openPngRows(file, manyPixels), nullptr);
    EXPECT_TRUE(decodePng(file, manyPixels).has_value());
}

// Damage that the chunks' checksums do not show.
TEST(PngRowReader, DamageIsFoundWhereTheLibraryFindsIt) {
    std::mt19937 random(23);
    const std::vector<Bytes> seeds{encodePng(*noisePage(901, 250, 24), {}).value_or(Bytes()),
                                   encodePng(*noisePage(2000, 330, 8), {}).value_or(Bytes()),
                                   fileOfRows(noiseRows(300, 3, {4, 3}))};
    for (int round = 0; round < 24; ++round) {
        std::vector<PngChunk> chunks = chunksOf(seeds[static_cast<size_t>(round) % seeds.size()]);
        PngChunk& chunk = chunks[1 + random() % (chunks.size() - 2)];
        const size_t reach = round % 2 == 0 ? chunk.content.size() : 12; // often the header
        chunk.content[random() % std::min(reach, chunk.content.size())] =
            static_cast<uint8_t>(random());
        expectAsByTheLibrary(fileOf(chunks));
    }
}

} // namespace
} // namespace paperline

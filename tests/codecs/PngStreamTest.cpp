#include "codecs/png/PngStream.h"

#include "PagePictures.h"
#include "PngChunks.h"
#include "codecs/png/PngCodec.h"
#include "codecs/png/PngWriter.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace paperline {
namespace {

using namespace testing_support;

constexpr uint64_t manyPixels = 1U << 24U;

// Large enough to be opened ahead, in any number of chunks.
PagePointer largePage(int bits) {
    return noisePage(bits == 24 ? 901 : 2400, 400, bits);
}

Bytes encoded(const BitmapImageRep& page) {
    return encodePng(page, {}).value_or(Bytes());
}

std::vector<size_t> pictureChunks(const std::vector<PngChunk>& chunks) {
    std::vector<size_t> found;
    for (size_t number = 0; number < chunks.size(); ++number)
        if (chunks[number].type == "IDAT")
            found.push_back(number);
    return found;
}

bool isWholeWhenOpened(const Bytes& file) {
    const std::unique_ptr<PngStream> stream = PngStream::open(file);
    while (stream && !stream->next().empty()) {
    }
    return stream && stream->isComplete();
}

TEST(PngStream, OpensLargePagesOfOurWriter) {
    for (const int bits : {8, 24}) {
        const PagePointer page = largePage(bits);
        const Bytes file = encoded(*page);
        const std::unique_ptr<PngStream> stream = PngStream::open(file);
        ASSERT_TRUE(stream != nullptr);
        size_t sum = 0;
        for (auto content = stream->next(); !content.empty(); content = stream->next())
            sum += content.size();
        EXPECT_TRUE(stream->isComplete());
        EXPECT_EQ(sum, (1U + page->row(0).size()) * 400);
        const auto picture = decodePng(file, manyPixels);
        ASSERT_TRUE(picture.has_value());
        expectSamePixels(*page, *picture->image);
    }
}

TEST(PngStream, LeavesOtherFilesToOthers) {
    EXPECT_EQ(PngStream::open({}), nullptr);
    EXPECT_EQ(PngStream::open(encoded(*noisePage(20, 10, 24))), nullptr); // small
    const Bytes file = encoded(*largePage(24));
    EXPECT_EQ(PngStream::open(std::span(file).first(file.size() - 1)), nullptr);
    EXPECT_EQ(PngStream::open(cutElsewhere(file, file.size())), nullptr); // one chunk
    std::vector<PngChunk> chunks = chunksOf(file);
    chunks.insert(chunks.end() - 1, {"tEXt", {'a', 0, 'b'}});
    EXPECT_EQ(PngStream::open(fileOf(chunks)), nullptr);
    chunks = chunksOf(file);
    chunks[pictureChunks(chunks).front()].content[0] = 0x79; // no zlib stream
    EXPECT_EQ(PngStream::open(fileOf(chunks)), nullptr);
}

TEST(PngStream, ChunksThatNeedEachOtherAreReadInTheUsualWay) {
    const PagePointer page = largePage(24);
    for (const size_t pieceBytes : {size_t{8192}, size_t{300'001}}) {
        const Bytes file = cutElsewhere(encoded(*page), pieceBytes);
        EXPECT_FALSE(isWholeWhenOpened(file));
        const auto picture = decodePng(file, manyPixels);
        ASSERT_TRUE(picture.has_value()) << pieceBytes;
        expectSamePixels(*page, *picture->image);
    }
}

TEST(PngStream, FindsDamageInEveryChunk) {
    const Bytes good = encoded(*largePage(24));
    size_t at = 8;
    for (const PngChunk& chunk : chunksOf(good)) {
        Bytes bad = good;
        bad[at + 8 + chunk.content.size() / 2] ^= 0x10U; // in the content, or in its checksum
        EXPECT_FALSE(chunk.type == "IDAT" && isWholeWhenOpened(bad)) << at;
        // Neither the density nor an end of no content takes anything from the picture.
        const bool isHarmless = chunk.type == "pHYs" || chunk.type == "IEND";
        EXPECT_EQ(decodePng(bad, manyPixels).has_value(), isHarmless) << chunk.type << at;
        at += 12 + chunk.content.size();
    }
}

TEST(PngStream, FindsAChunkOfAnotherPage) {
    std::vector<PngChunk> chunks = chunksOf(encoded(*largePage(24)));
    const std::vector<size_t> picture = pictureChunks(chunks);
    ASSERT_GT(picture.size(), 3U);
    std::swap(chunks[picture[1]].content, chunks[picture[2]].content);
    // Each chunk is sound; only the checksum of the whole tells.
    EXPECT_FALSE(isWholeWhenOpened(fileOf(chunks)));
    EXPECT_FALSE(decodePng(fileOf(chunks), manyPixels).has_value());
}

// More chunks than are opened ahead of the reader.
TEST(PngStream, AnyNumberOfChunks) {
    const PagePointer page = noisePage(4001, 900, 24);
    const Bytes file = encoded(*page);
    EXPECT_GT(pictureChunks(chunksOf(file)).size(), 40U);
    const auto picture = decodePng(file, manyPixels);
    ASSERT_TRUE(picture.has_value());
    expectSamePixels(*page, *picture->image);
}

TEST(PngStream, CutFilesGiveNothing) {
    const Bytes good = encoded(*largePage(24));
    for (size_t part = 1; part < 8; ++part) {
        const auto end = good.begin() + static_cast<ptrdiff_t>(good.size() * part / 8);
        EXPECT_FALSE(decodePng(Bytes(good.begin(), end), manyPixels).has_value()) << part;
    }
}

TEST(PngStream, MayBeLeftAtAnyTime) {
    const Bytes file = encoded(*largePage(24));
    for (const int count : {0, 1, 2}) {
        const std::unique_ptr<PngStream> stream = PngStream::open(file);
        for (int chunk = 0; chunk < count; ++chunk)
            EXPECT_FALSE(stream->next().empty());
        EXPECT_FALSE(stream->isComplete());
    }
}

} // namespace
} // namespace paperline

#include "platform/PngStream.h"

#include "PagePictures.h"
#include "PictureFiles.h"
#include "platform/PictureDecoders.h"
#include "platform/PngWriter.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace paperline {
namespace {

using namespace testing_support;

constexpr uint64_t manyPixels = 1U << 24U;

size_t lengthAt(const Bytes& file, size_t at) {
    return size_t{file[at]} << 24U | size_t{file[at + 1]} << 16U | size_t{file[at + 2]} << 8U |
           file[at + 3];
}

struct Chunk {
    std::string type;
    Bytes content;
};

std::vector<Chunk> chunksOf(const Bytes& file) {
    std::vector<Chunk> chunks;
    for (size_t at = 8; at + 12 <= file.size(); at += 12 + lengthAt(file, at)) {
        const auto type = file.begin() + static_cast<ptrdiff_t>(at + 4);
        const auto content = type + 4;
        chunks.push_back(
            {{type, content}, {content, content + static_cast<ptrdiff_t>(lengthAt(file, at))}});
    }
    return chunks;
}

Bytes fileOf(const std::vector<Chunk>& chunks) {
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const Chunk& chunk : chunks)
        append(file, pngChunk(chunk.type, chunk.content));
    return file;
}

// Large enough to be opened ahead, in any number of chunks.
PagePointer largePage(int bits) {
    return noisePage(bits == 24 ? 901 : 2400, 400, bits);
}

Bytes encoded(const BitmapImageRep& page) {
    return encodePng(page, {}).value_or(Bytes());
}

// The same stream, cut where nothing in it asks for it.
Bytes cutElsewhere(const Bytes& file, size_t pieceBytes) {
    std::vector<Chunk> chunks;
    Bytes stream;
    for (const Chunk& chunk : chunksOf(file)) {
        if (chunk.type == "IDAT")
            append(stream, chunk.content);
        else if (chunk.type != "IEND")
            chunks.push_back(chunk);
    }
    for (size_t at = 0; at < stream.size(); at += pieceBytes) {
        const size_t end = std::min(stream.size(), at + pieceBytes);
        chunks.push_back({"IDAT",
                          {stream.begin() + static_cast<ptrdiff_t>(at),
                           stream.begin() + static_cast<ptrdiff_t>(end)}});
    }
    chunks.push_back({"IEND", {}});
    return fileOf(chunks);
}

std::vector<size_t> pictureChunks(const std::vector<Chunk>& chunks) {
    std::vector<size_t> found;
    for (size_t number = 0; number < chunks.size(); ++number)
        if (chunks[number].type == "IDAT")
            found.push_back(number);
    return found;
}

bool isWholeWhenOpened(const Bytes& file) {
    PngStream stream(file, PngStream::Picture::openedAhead);
    Bytes all;
    for (uint8_t byte = 0; stream.read({&byte, 1});)
        all.push_back(byte);
    const Bytes end(all.end() - static_cast<ptrdiff_t>(std::min<size_t>(all.size(), 12)),
                    all.end());
    return end == pngChunk("IEND", {});
}

TEST(PngStream, OpensLargePagesOfOurWriter) {
    for (const int bits : {8, 24}) {
        const PagePointer page = largePage(bits);
        const Bytes file = encoded(*page);
        EXPECT_TRUE(PngStream(file, PngStream::Picture::openedAhead).isOpenedAhead());
        EXPECT_TRUE(isWholeWhenOpened(file));
        const auto picture = decodePng(file, manyPixels);
        ASSERT_TRUE(picture.has_value());
        expectSamePixels(*page, *picture->image);
    }
}

TEST(PngStream, HandsSmallFilesOnAsTheyAre) {
    const Bytes file = encoded(*noisePage(20, 10, 24));
    PngStream stream(file, PngStream::Picture::openedAhead);
    EXPECT_FALSE(stream.isOpenedAhead());
    Bytes copy(file.size());
    ASSERT_TRUE(stream.read(copy));
    EXPECT_EQ(copy, file);
    EXPECT_FALSE(stream.read({copy.data(), 1}));
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
    for (const Chunk& chunk : chunksOf(good)) {
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
    std::vector<Chunk> chunks = chunksOf(encoded(*largePage(24)));
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
    for (const size_t count : {size_t{0}, size_t{1}, size_t{400'000}}) {
        PngStream stream(file, PngStream::Picture::openedAhead);
        Bytes some(count);
        EXPECT_TRUE(stream.read(some));
    }
}

} // namespace
} // namespace paperline

// Image information and the three ways a page goes to the application.
#include "tests/sources/framework/SourceFixture.h"
#include "tests/support/TestFolder.h"

#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace paperline::sources {

using namespace twain;

namespace {

class DataSourceTransfer : public SourceFixture {
protected:
    std::array<uint8_t, 42> imageInfo() {
        std::array<uint8_t, 42> bytes{};
        bytes.fill(0xaa);
        EXPECT_EQ(image(DAT_IMAGEINFO, MSG_GET, bytes.data()), TWRC_SUCCESS);
        return bytes;
    }
};

using InfoBytes = std::array<uint8_t, 42>;

} // namespace

TEST_F(DataSourceTransfer, ImageInfoOfAColourPage) {
    reachTransferReady({ScriptedPage::of(2480, 3, 24, 299.7)});
    // Resolution 300 whole, 2480 x 3 pixels, 3 samples of 8 bits, 24 bits, chunky, RGB, plain.
    EXPECT_EQ(imageInfo(),
              (InfoBytes{0x2c, 1, 0, 0, 0x2c, 1, 0, 0, 0xb0, 9, 0, 0, 3, 0,  0, 0, 3, 0, 8, 0, 8,
                         0,    8, 0, 0, 0,    0, 0, 0, 0,    0, 0, 0, 0, 24, 0, 0, 0, 2, 0, 0, 0}));
}

TEST_F(DataSourceTransfer, ImageInfoOfALineartPage) {
    reachTransferReady({ScriptedPage::of(10, 2, 1, 72)});
    EXPECT_EQ(imageInfo(),
              (InfoBytes{72, 0, 0, 0, 72, 0, 0, 0, 10, 0, 0, 0, 2, 0, 0, 0, 1, 0, 1, 0, 0,
                         0,  0, 0, 0, 0,  0, 0, 0, 0,  0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(DataSourceTransfer, ImageInfoOfAGreyPage) {
    auto page = ScriptedPage::of(5, 4, 8, 600);
    page.format.verticalDpi = 1200;
    reachTransferReady({page});
    EXPECT_EQ(imageInfo(),
              (InfoBytes{0x58, 2, 0, 0, 0xb0, 4, 0, 0, 5, 0, 0, 0, 4, 0, 0, 0, 1, 0, 8, 0, 0,
                         0,    0, 0, 0, 0,    0, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0, 1, 0, 0, 0}));
}

namespace {

struct BufferCase {
    int bits;
    size_t bufferRows;    // rows that fit
    size_t spare;         // bytes beyond them, less than a row
    size_t expectedCalls; // for 13 rows
};

class BufferSizes : public SourceFixture, public testing::WithParamInterface<BufferCase> {};

} // namespace

TEST_P(BufferSizes, StripsAreAsLargeAsTheBufferAllows) {
    const BufferCase& buffer = GetParam();
    const auto page = ScriptedPage::of(21, 13, buffer.bits);
    reachTransferReady({page});
    std::vector<uint8_t> received;
    const auto row = static_cast<size_t>(page.format.bytesPerRow());
    const auto codes = pullPage(buffer.bufferRows * row + buffer.spare, received);
    EXPECT_EQ(received, page.pixels);
    ASSERT_EQ(codes.size(), buffer.expectedCalls);
    EXPECT_EQ(codes.back(), TWRC_XFERDONE);
    std::vector<uint8_t> again;
    EXPECT_EQ(pullPage(5000, again), std::vector<uint16_t>{TWRC_FAILURE});
    EXPECT_EQ(condition(), TWCC_SEQERROR);
}

INSTANTIATE_TEST_SUITE_P(OneRowOddSizesWholePage,
                         BufferSizes,
                         testing::Values(BufferCase{1, 1, 0, 13},
                                         BufferCase{1, 5, 2, 3},
                                         BufferCase{1, 13, 0, 1},
                                         BufferCase{8, 1, 20, 13},
                                         BufferCase{8, 6, 7, 3},
                                         BufferCase{8, 13, 0, 1},
                                         BufferCase{8, 400, 0, 1},
                                         BufferCase{24, 1, 0, 13},
                                         BufferCase{24, 12, 62, 2},
                                         BufferCase{24, 13, 1, 1}));

TEST_F(DataSourceTransfer, OneStripsRecordByteForByte) {
    reachTransferReady({ScriptedPage::of(3, 2, 24)});
    std::vector<uint8_t> buffer(18);
    auto transfer = memoryRequest(buffer);
    ASSERT_EQ(image(DAT_IMAGEMEMXFER, MSG_GET, &transfer), TWRC_XFERDONE);
    std::array<uint8_t, 34> bytes{}; // all but the pointer
    std::memcpy(bytes.data(), &transfer, bytes.size());
    EXPECT_EQ(bytes,
              (std::array<uint8_t, 34>{0, 0, 9, 0, 0, 0,  3, 0, 0, 0, 2, 0, 0, 0,  0, 0, 0,
                                       0, 0, 0, 0, 0, 18, 0, 0, 0, 9, 0, 0, 0, 18, 0, 0, 0}));
}

TEST_F(DataSourceTransfer, BuffersThatHoldNoRowAreRefused) {
    reachTransferReady({ScriptedPage::of(10, 10, 24)});
    std::vector<uint8_t> buffer(29);
    auto transfer = memoryRequest(buffer);
    expectFailure(image(DAT_IMAGEMEMXFER, MSG_GET, &transfer), TWCC_BADVALUE);
    transfer.Memory.Length = 0;
    expectFailure(image(DAT_IMAGEMEMXFER, MSG_GET, &transfer), TWCC_BADVALUE);
    transfer.Memory = {TWMF_APPOWNS | TWMF_POINTER, 300, nullptr};
    expectFailure(image(DAT_IMAGEMEMXFER, MSG_GET, &transfer), TWCC_BADVALUE);
    uint16_t count = 0;
    EXPECT_EQ(pending(MSG_RESET, count), TWRC_SUCCESS) << "still state 6";
}

TEST_F(DataSourceTransfer, ABufferMayBeAHandle) {
    const auto page = ScriptedPage::of(4, 4, 8);
    reachTransferReady({page});
    const auto handle = ScriptedManager::allocate(16);
    abi::ImageMemXfer transfer{};
    transfer.Memory = {TWMF_APPOWNS | TWMF_HANDLE, 16, handle};
    EXPECT_EQ(image(DAT_IMAGEMEMXFER, MSG_GET, &transfer), TWRC_XFERDONE);
    EXPECT_EQ(std::memcmp(ScriptedManager::lock(handle), page.pixels.data(), 16), 0);
    ScriptedManager::release(handle);
}

TEST_F(DataSourceTransfer, SetupMemoryFitsThePage) {
    reachTransferReady({ScriptedPage::of(1000, 10, 24)});
    abi::SetupMemXfer setup{};
    ASSERT_EQ(control(DAT_SETUPMEMXFER, MSG_GET, &setup), TWRC_SUCCESS);
    EXPECT_EQ(+setup.MinBufSize, 3000u);
    EXPECT_EQ(+setup.MaxBufSize, 30000u);
    EXPECT_EQ(+setup.Preferred, 30000u);
}

TEST_F(DataSourceTransfer, NativeTransferIsATiffFile) {
    reachTransferReady({ScriptedPage::of(2, 2, 8, 200)});
    abi::Handle handle = nullptr;
    ASSERT_EQ(image(DAT_IMAGENATIVEXFER, MSG_GET, &handle), TWRC_XFERDONE);
    const auto* bytes = static_cast<const uint8_t*>(ScriptedManager::lock(handle));
    const std::array<uint8_t, 10> head{'I', 'I', 42, 0, 8, 0, 0, 0, 13, 0};
    EXPECT_TRUE(std::equal(head.begin(), head.end(), bytes));
    const auto header = tiffHeader(feed->current.format);
    ASSERT_TRUE(header);
    EXPECT_EQ(std::memcmp(bytes, header->data(), header->size()), 0);
    EXPECT_EQ(std::memcmp(bytes + header->size(), feed->current.pixels.data(), 4), 0);
    ScriptedManager::release(handle);
    uint16_t count = 9;
    EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_SUCCESS);
    EXPECT_EQ(count, 0);
}

TEST_F(DataSourceTransfer, NativeTransferWithoutMemory) {
    reachTransferReady({ScriptedPage::of(2, 2, 8)});
    ScriptedManager::outOfMemory = true;
    abi::Handle handle = nullptr;
    expectFailure(image(DAT_IMAGENATIVEXFER, MSG_GET, &handle), TWCC_LOWMEMORY);
    ScriptedManager::outOfMemory = false;
    EXPECT_EQ(image(DAT_IMAGENATIVEXFER, MSG_GET, &handle), TWRC_XFERDONE);
    ScriptedManager::release(handle);
}

TEST_F(DataSourceTransfer, FileTransferWritesTheNamedFile) {
    const testing_support::TestFolder folder;
    const std::string path = folder / "page.tif";
    reachTransferReady({ScriptedPage::of(5, 3, 24)});
    abi::SetupFileXfer setup{};
    std::memcpy(setup.FileName, path.c_str(), path.size());
    setup.Format = TWFF_BMP;
    expectFailure(control(DAT_SETUPFILEXFER, MSG_SET, &setup), TWCC_BADVALUE);
    setup.Format = TWFF_TIFF;
    ASSERT_EQ(control(DAT_SETUPFILEXFER, MSG_SET, &setup), TWRC_SUCCESS);
    abi::SetupFileXfer back{};
    ASSERT_EQ(control(DAT_SETUPFILEXFER, MSG_GET, &back), TWRC_SUCCESS);
    EXPECT_EQ(std::string(back.FileName), path);
    ASSERT_EQ(image(DAT_IMAGEFILEXFER, MSG_GET, nullptr), TWRC_XFERDONE);
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const auto header = tiffHeader(feed->current.format);
    ASSERT_EQ(content.size(), header->size() + 45);
    EXPECT_EQ(std::memcmp(content.data() + header->size(), feed->current.pixels.data(), 45), 0);
    EXPECT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(rmdir(folder.path().c_str()), 0);
}

TEST_F(DataSourceTransfer, AFileThatCannotBeWrittenFailsAndThePageStays) {
    reachTransferReady({ScriptedPage::of(5, 3, 24)});
    abi::SetupFileXfer setup{};
    std::memcpy(setup.FileName, "/proc/no/such/folder", 20);
    ASSERT_EQ(control(DAT_SETUPFILEXFER, MSG_SET, &setup), TWRC_SUCCESS);
    expectFailure(image(DAT_IMAGEFILEXFER, MSG_GET, nullptr), TWCC_FILEWRITEERROR);
    std::vector<uint8_t> page;
    EXPECT_EQ(pullPage(100, page), std::vector<uint16_t>{TWRC_XFERDONE});
}

TEST_F(DataSourceTransfer, AFileNameWithoutItsEndIsRefused) {
    ASSERT_EQ(open(), TWRC_SUCCESS);
    abi::SetupFileXfer setup{};
    std::memset(setup.FileName, 'x', sizeof setup.FileName);
    expectFailure(control(DAT_SETUPFILEXFER, MSG_SET, &setup), TWCC_BADVALUE);
}

TEST_F(DataSourceTransfer, ExtendedInfoAnswersEachQuestionWithNotSupported) {
    reachTransferReady({ScriptedPage::of(2, 2, 8)});
    std::vector<uint8_t> page;
    pullPage(100, page);
    std::array<uint8_t, 4 + 2 * 16 + 1> bytes{2};
    bytes[4] = 0x00; // a bar code count
    bytes[5] = 0x12;
    bytes[28] = 77; // stale item
    bytes[36] = 0x5a;
    ASSERT_EQ(image(DAT_EXTIMAGEINFO, MSG_GET, bytes.data()), TWRC_SUCCESS);
    EXPECT_EQ(bytes[4], 0x00);
    EXPECT_EQ(bytes[5], 0x12);
    EXPECT_EQ(bytes[10], 8); // TWRC_INFONOTSUPPORTED
    EXPECT_EQ(bytes[26], 8);
    EXPECT_EQ(bytes[28], 0);
    EXPECT_EQ(bytes[36], 0x5a) << "nothing beyond the two records";
    const uint32_t tooMany = UINT32_MAX;
    std::memcpy(bytes.data(), &tooMany, 4);
    expectFailure(image(DAT_EXTIMAGEINFO, MSG_GET, bytes.data()), TWCC_BADVALUE);
}

TEST_F(DataSourceTransfer, TheLayoutIsThePages) {
    giveEntryPoint();
    ASSERT_EQ(open(), TWRC_SUCCESS);
    abi::ImageLayout layout{};
    ASSERT_EQ(image(DAT_IMAGELAYOUT, MSG_GET, &layout), TWRC_SUCCESS);
    EXPECT_EQ(layout.Frame.Right.Whole, 8); // 210 mm are 8.268 inches
    EXPECT_EQ(layout.Frame.Right.Frac, 17545);
    EXPECT_EQ(layout.Frame.Bottom.Whole, 11);
    layout.Frame = {{1, 0}, {1, 0}, {3, 32768}, {5, 0}};
    EXPECT_EQ(image(DAT_IMAGELAYOUT, MSG_SET, &layout), TWRC_SUCCESS);
    EXPECT_EQ(feed->descriptors[3].value, "25.4");
    EXPECT_EQ(feed->descriptors[5].value, "88.9");
    layout.Frame.Right = {0, 5};
    expectFailure(image(DAT_IMAGELAYOUT, MSG_SET, &layout), TWCC_BADVALUE);
    feed->pages = {ScriptedPage::of(600, 900, 8, 300)};
    ASSERT_EQ(enable(), TWRC_SUCCESS);
    ASSERT_EQ(image(DAT_IMAGELAYOUT, MSG_GET, &layout), TWRC_SUCCESS);
    EXPECT_EQ(layout.Frame.Left.Whole, 1);
    EXPECT_EQ(layout.Frame.Right.Whole, 3);
    EXPECT_EQ(layout.Frame.Bottom.Whole, 4);
    EXPECT_EQ(+layout.PageNumber, 1u);
}

} // namespace paperline::sources

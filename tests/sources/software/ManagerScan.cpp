#include "tests/sources/software/ManagerScan.h"

#include "sources/software/SoftwareDevice.h"
#include "tests/sources/software/MemorySink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <thread>

namespace paperline::sources {

namespace abi = twain::abi;
using namespace twain;

namespace {

constexpr size_t largestPage = size_t{64} << 20;
constexpr int mostStrips = 2000; // of a page; a source may send empty ones for ever
constexpr int mostPages = 20;
constexpr std::chrono::seconds longestWait{3}; // for a page that a source keeps to itself

std::atomic<int> readyMessages{0};

uint16_t callback(abi::Identity*, abi::Identity*, uint32_t, uint16_t, uint16_t message, void*) {
    if (message == MSG_XFERREADY)
        ++readyMessages;
    return TWRC_SUCCESS;
}

} // namespace

ManagerScan::ManagerScan(const std::filesystem::path& root) {
    setenv("PAPERLINE_ROOT", (root.empty() ? folder_ / "root" : root).c_str(), 1);
    setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    setenv("HOME", (folder_ / "home").c_str(), 1);
    setenv("PAPERLINE_DSM_LOG", (folder_ / "dsm.log").c_str(), 1);
    unsetenv("PAPERLINE_SOURCE_OPTIONS");
    application_.SupportedGroups = DG_CONTROL | DG_IMAGE | DF_APP2;
    std::strcpy(application_.ProductName, "Scan test");
}

ManagerScan::~ManagerScan() {
    if (entry_ != nullptr)
        entry_(&application_, nullptr, DG_CONTROL, DAT_PARENT, MSG_CLOSEDSM, nullptr);
    // The loader knows a file by its inode: one that is still mapped must not give its number to
    // another test's file, so it stays open for the life of the process.
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder_)) {
        if (file.is_regular_file()) {
            EXPECT_GE(::open(file.path().c_str(), O_RDONLY | O_CLOEXEC), 0);
        }
    }
}

bool ManagerScan::openManager(const std::filesystem::path& buildTree) {
    const auto file = buildTree / "Paperline.app/Contents/Frameworks/libpaperline-dsm.so";
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        return false;
    entry_ = reinterpret_cast<abi::EntryFunction>(dlsym(library, "DSM_Entry"));
    if (entry_(&application_, nullptr, DG_CONTROL, DAT_PARENT, MSG_OPENDSM, nullptr) !=
        TWRC_SUCCESS)
        return false;
    abi::Callback record{reinterpret_cast<void*>(&callback), 0, 0};
    return entry_(
               &application_, nullptr, DG_CONTROL, DAT_CALLBACK, MSG_REGISTER_CALLBACK, &record) ==
           TWRC_SUCCESS;
}

std::vector<std::string> ManagerScan::sourceNames() {
    std::vector<std::string> names;
    abi::Identity identity{};
    for (uint16_t message = MSG_GETFIRST;
         entry_(&application_, nullptr, DG_CONTROL, DAT_IDENTITY, message, &identity) ==
         TWRC_SUCCESS;
         message = MSG_GETNEXT)
        names.emplace_back(identity.ProductName);
    return names;
}

bool ManagerScan::select(const std::string& product) {
    for (uint16_t message = MSG_GETFIRST;; message = MSG_GETNEXT) {
        if (entry_(&application_, nullptr, DG_CONTROL, DAT_IDENTITY, message, &source_) !=
            TWRC_SUCCESS)
            return false;
        if (source_.ProductName == product)
            return true;
    }
}

uint16_t ManagerScan::toSource(uint32_t group, uint16_t type, uint16_t message, void* data) {
    return entry_(&application_, &source_, group, type, message, data);
}

uint16_t ManagerScan::sourceCondition() {
    abi::Status status{};
    toSource(DG_CONTROL, DAT_STATUS, MSG_GET, &status);
    return status.ConditionCode;
}

bool ManagerScan::waitForReady() {
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (readyMessages == 0 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return readyMessages > 0;
}

void ManagerScan::readStrips(ScannedPage& page) {
    std::vector<uint8_t> buffer(std::max<size_t>(page.bytes.size(), 1));
    do {
        abi::ImageMemXfer transfer{};
        transfer.Memory = {
            TWMF_APPOWNS | TWMF_POINTER, static_cast<uint32_t>(buffer.size()), buffer.data()};
        page.lastCode = toSource(DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET, &transfer);
        ++page.strips;
        const uint64_t start = uint64_t{transfer.YOffset} * transfer.BytesPerRow;
        const uint64_t count = uint64_t{transfer.Rows} * transfer.BytesPerRow;
        const bool fits = start <= page.bytes.size() && count <= page.bytes.size() - start;
        if ((page.lastCode == TWRC_SUCCESS || page.lastCode == TWRC_XFERDONE) && fits)
            std::memcpy(page.bytes.data() + start, buffer.data(), count);
    } while (page.lastCode == TWRC_SUCCESS && page.strips < mostStrips);
}

ScannedPage ManagerScan::readPage() {
    ScannedPage page;
    abi::SetupMemXfer setup{};
    const uint16_t code = toSource(DG_IMAGE, DAT_IMAGEINFO, MSG_GET, &page.info);
    toSource(DG_CONTROL, DAT_SETUPMEMXFER, MSG_GET, &setup);
    PageFormat format;
    format.widthPixels = page.info.ImageWidth;
    format.heightPixels = page.info.ImageLength;
    format.bitsPerPixel = page.info.BitsPerPixel;
    const int64_t row = format.bytesPerRow();
    if (code != TWRC_SUCCESS || row <= 0 || format.heightPixels <= 0 ||
        row > static_cast<int64_t>(largestPage) / format.heightPixels) {
        page.lastCode = TWRC_FAILURE;
        return page;
    }
    page.bytes.resize(static_cast<size_t>(row * format.heightPixels));
    readStrips(page);
    return page;
}

void ManagerScan::readBatch(ScanResult& result) {
    for (int page = 0; page < mostPages; ++page) {
        result.pages.push_back(readPage());
        abi::PendingXfers pending{};
        result.endCode = toSource(DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER, &pending);
        result.lastCount = pending.Count;
        if (result.endCode != TWRC_SUCCESS && result.condition == 0)
            result.condition = sourceCondition();
        if (pending.Count == 0)
            break;
    }
}

ScanResult ManagerScan::scan(const std::string& product, const std::string& options) {
    setenv("PAPERLINE_SOURCE_OPTIONS", options.c_str(), 1);
    ScanResult result;
    readyMessages = 0;
    if (!select(product)) {
        result.openCode = TWRC_ENDOFLIST;
        return result;
    }
    result.openCode =
        entry_(&application_, nullptr, DG_CONTROL, DAT_IDENTITY, MSG_OPENDS, &source_);
    if (result.openCode != TWRC_SUCCESS) {
        abi::Status status{};
        entry_(&application_, nullptr, DG_CONTROL, DAT_STATUS, MSG_GET, &status);
        result.condition = status.ConditionCode;
        return result;
    }
    abi::UserInterface ui{};
    result.enableCode = toSource(DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS, &ui);
    if (result.enableCode != TWRC_SUCCESS)
        result.condition = sourceCondition();
    else if (waitForReady())
        readBatch(result);
    abi::PendingXfers pending{};
    toSource(DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER, &pending);
    toSource(DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET, &pending);
    toSource(DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS, &ui);
    result.closed =
        entry_(&application_, nullptr, DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, &source_) ==
        TWRC_SUCCESS;
    return result;
}

std::vector<std::vector<uint8_t>> drawnPages(const std::string& mode, int pages) {
    SoftwareDevice device;
    std::vector<std::vector<uint8_t>> result;
    EXPECT_EQ(device.setOption("resolution", "50"), ScanStatus::good);
    EXPECT_EQ(device.setOption("mode", mode), ScanStatus::good);
    EXPECT_EQ(device.setOption("count", std::to_string(pages)), ScanStatus::good);
    EXPECT_EQ(device.start(), ScanStatus::good);
    MemorySink sink;
    while (device.readPage(sink) == ScanStatus::good)
        result.push_back(sink.bytes);
    return result;
}

void expectWholePages(const ScanResult& result, size_t count, const std::string& what) {
    ASSERT_EQ(result.pages.size(), count) << what;
    const auto expected = drawnPages("Gray", 3);
    for (size_t page = 0; page < count; ++page) {
        EXPECT_EQ(result.pages[page].lastCode, TWRC_XFERDONE) << what;
        EXPECT_EQ(result.pages[page].bytes, expected[page]) << what << " page " << page;
    }
}

} // namespace paperline::sources

// A data source over a scripted feed and a scripted manager, which count and remember.
#pragma once

#include "sources/framework/DataSource.h"
#include "sources/framework/TiffPage.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace paperline::sources {

namespace abi = twain::abi; // the C++ runtime has a global one of this name

struct ScriptedPage {
    ScanStatus status = ScanStatus::good;
    PageFormat format;
    std::vector<uint8_t> pixels;

    // Every byte differs from its neighbours, so that a row out of place shows.
    static ScriptedPage of(int32_t width, int32_t height, int bits, double dpi = 300) {
        ScriptedPage page;
        page.format = {width, height, bits, dpi, dpi};
        page.pixels.resize(static_cast<size_t>(page.format.bytesPerRow() * height));
        for (size_t i = 0; i < page.pixels.size(); ++i)
            page.pixels[i] = static_cast<uint8_t>(i * 7 + i / 256);
        return page;
    }
    static ScriptedPage failing(ScanStatus status) {
        ScriptedPage page;
        page.status = status;
        return page;
    }
};

class ScriptedFeed : public PageFeed {
public:
    ScanStatus open() override {
        calls.push_back("open");
        return openStatus;
    }
    void close() override { calls.push_back("close"); }
    std::vector<OptionDescriptor> options() override { return descriptors; }
    ScanStatus setOption(const std::string& name, const std::string& value) override {
        calls.push_back("set " + name + "=" + value);
        for (OptionDescriptor& option : descriptors)
            if (option.name == name) {
                option.value = value;
                return setStatus;
            }
        return ScanStatus::invalid;
    }
    ScanStatus start() override {
        calls.push_back("start");
        return startStatus;
    }
    ScanStatus nextPage(PageFormat& format) override {
        calls.push_back("nextPage");
        if (pages.empty())
            return ScanStatus::noMorePages;
        current = pages.front();
        pages.pop_front();
        format = current.format;
        return current.status;
    }
    std::span<const uint8_t> pixels() const override { return current.pixels; }
    void stop() override { calls.push_back("stop"); }
    std::string errorText() const override { return text; }

    ScanStatus openStatus = ScanStatus::good;
    ScanStatus startStatus = ScanStatus::good;
    ScanStatus setStatus = ScanStatus::good;
    std::vector<OptionDescriptor> descriptors;
    std::deque<ScriptedPage> pages;
    ScriptedPage current;
    std::string text;
    std::vector<std::string> calls;
};

// A standard manager's entry: remembers what sources tell it, and what memory is out.
struct ScriptedManager {
    static inline std::vector<uint16_t> messages;
    static inline std::set<void*> memory;
    static inline std::function<void()> insideNotification;
    static inline uint16_t answer = twain::TWRC_SUCCESS;
    static inline uint32_t sourceId = 0;
    static inline uint32_t applicationId = 0;
    static inline bool outOfMemory = false;

    static void reset() {
        messages.clear();
        memory.clear();
        insideNotification = nullptr;
        answer = twain::TWRC_SUCCESS;
        sourceId = applicationId = 0;
        outOfMemory = false;
    }
    static uint16_t entry(twain::abi::Identity* origin,
                          twain::abi::Identity* destination,
                          uint32_t group,
                          uint16_t type,
                          uint16_t message,
                          void* data) {
        EXPECT_EQ(group, twain::DG_CONTROL);
        EXPECT_EQ(type, twain::DAT_NULL);
        EXPECT_EQ(data, nullptr);
        sourceId = origin->Id;
        applicationId = destination->Id;
        messages.push_back(message);
        if (insideNotification)
            insideNotification();
        return answer;
    }
    // Handles are not the memory itself, so that a source that does not lock one is found out.
    static twain::abi::Handle allocate(uint32_t bytes) {
        if (outOfMemory)
            return nullptr;
        auto** handle = static_cast<void**>(std::malloc(sizeof(void*)));
        *handle = std::malloc(bytes);
        memory.insert(handle);
        return handle;
    }
    static void release(twain::abi::Handle handle) {
        EXPECT_EQ(memory.erase(handle), 1u);
        std::free(*static_cast<void**>(handle));
        std::free(handle);
    }
    static void* lock(twain::abi::Handle handle) { return *static_cast<void**>(handle); }
    static void unlock(twain::abi::Handle) {}

    static twain::abi::EntryPoint entryPoint() {
        return {sizeof(twain::abi::EntryPoint), &entry, &allocate, &release, &lock, &unlock};
    }
};

inline OptionDescriptor
choiceOption(const std::string& name, const std::string& value, std::vector<std::string> choices) {
    OptionDescriptor option;
    option.name = name;
    option.value = value;
    option.choices = std::move(choices);
    return option;
}

inline OptionDescriptor
rangeOption(const std::string& name, const std::string& value, double minimum, double maximum) {
    OptionDescriptor option;
    option.name = name;
    option.kind = OptionKind::fixed;
    option.value = value;
    option.hasRange = true;
    option.minimum = minimum;
    option.maximum = maximum;
    option.step = 1;
    return option;
}

class SourceFixture : public testing::Test {
protected:
    SourceFixture() {
        ScriptedManager::reset();
        auto owned = std::make_unique<ScriptedFeed>();
        feed = owned.get();
        feed->descriptors = {
            choiceOption("mode", "Color", {"Lineart", "Gray", "Color"}),
            choiceOption("source", "Flatbed", {"Flatbed", "Automatic Document Feeder"}),
            rangeOption("resolution", "300", 50, 1200),
            rangeOption("tl-x", "0", 0, 215.9),
            rangeOption("tl-y", "0", 0, 297),
            rangeOption("br-x", "210", 0, 215.9),
            rangeOption("br-y", "297", 0, 297),
        };
        SourceConfiguration configuration;
        configuration.product = "Test Scanner";
        configuration.manufacturer = "Corvane";
        configuration.family = "PageCentral";
        source = std::make_unique<DataSource>(configuration, std::move(owned));
        application.Id = 77;
    }
    ~SourceFixture() override {
        source.reset();
        EXPECT_TRUE(ScriptedManager::memory.empty()) << "memory that was not freed";
    }

    uint16_t control(uint16_t type, uint16_t message, void* data) {
        return source->entry(&application, {twain::DG_CONTROL, type, message}, data);
    }
    uint16_t image(uint16_t type, uint16_t message, void* data) {
        return source->entry(&application, {twain::DG_IMAGE, type, message}, data);
    }
    uint16_t condition() {
        twain::abi::Status status{0xffff, 0xffff};
        EXPECT_EQ(control(twain::DAT_STATUS, twain::MSG_GET, &status), twain::TWRC_SUCCESS);
        return status.ConditionCode;
    }
    void giveEntryPoint() {
        auto point = ScriptedManager::entryPoint();
        ASSERT_EQ(control(twain::DAT_ENTRYPOINT, twain::MSG_SET, &point), twain::TWRC_SUCCESS);
    }
    uint16_t open() {
        twain::abi::Identity identity{};
        identity.Id = 12;
        return control(twain::DAT_IDENTITY, twain::MSG_OPENDS, &identity);
    }
    uint16_t close() {
        twain::abi::Identity identity{};
        return control(twain::DAT_IDENTITY, twain::MSG_CLOSEDS, &identity);
    }
    uint16_t enable() {
        twain::abi::UserInterface ui{};
        return control(twain::DAT_USERINTERFACE, twain::MSG_ENABLEDS, &ui);
    }
    uint16_t disable() {
        twain::abi::UserInterface ui{};
        return control(twain::DAT_USERINTERFACE, twain::MSG_DISABLEDS, &ui);
    }
    uint16_t pending(uint16_t message, uint16_t& count) {
        twain::abi::PendingXfers record{0x5555, 0x55555555};
        const uint16_t code = control(twain::DAT_PENDINGXFERS, message, &record);
        count = record.Count;
        return code;
    }
    // Opened and enabled with these pages: state 6.
    void reachTransferReady(std::deque<ScriptedPage> pages) {
        giveEntryPoint();
        feed->pages = std::move(pages);
        ASSERT_EQ(open(), twain::TWRC_SUCCESS);
        ASSERT_EQ(enable(), twain::TWRC_SUCCESS);
        ASSERT_EQ(ScriptedManager::messages, std::vector<uint16_t>{twain::MSG_XFERREADY});
    }
    twain::abi::ImageMemXfer memoryRequest(std::vector<uint8_t>& buffer) {
        twain::abi::ImageMemXfer transfer{};
        transfer.Compression = twain::TWON_DONTCARE16;
        transfer.BytesPerRow = transfer.Columns = transfer.Rows = transfer.XOffset =
            transfer.YOffset = transfer.BytesWritten = twain::TWON_DONTCARE32;
        transfer.Memory = {twain::TWMF_APPOWNS | twain::TWMF_POINTER,
                           static_cast<uint32_t>(buffer.size()),
                           buffer.data()};
        return transfer;
    }
    // Pulls the whole page with a buffer of this size; the codes of all calls.
    std::vector<uint16_t> pullPage(size_t bufferSize, std::vector<uint8_t>& page) {
        std::vector<uint16_t> codes;
        std::vector<uint8_t> buffer(bufferSize);
        do {
            auto transfer = memoryRequest(buffer);
            codes.push_back(image(twain::DAT_IMAGEMEMXFER, twain::MSG_GET, &transfer));
            if (codes.back() != twain::TWRC_SUCCESS && codes.back() != twain::TWRC_XFERDONE)
                break;
            EXPECT_EQ(page.size(), uint64_t{transfer.YOffset} * transfer.BytesPerRow);
            EXPECT_EQ(+transfer.XOffset, 0u);
            EXPECT_EQ(transfer.Compression, twain::TWCP_NONE);
            EXPECT_EQ(+transfer.BytesWritten, transfer.Rows * transfer.BytesPerRow);
            page.insert(page.end(), buffer.begin(), buffer.begin() + transfer.BytesWritten);
        } while (codes.back() == twain::TWRC_SUCCESS);
        return codes;
    }
    void expectFailure(uint16_t returned, uint16_t conditionCode) {
        EXPECT_EQ(returned, twain::TWRC_FAILURE);
        EXPECT_EQ(condition(), conditionCode);
    }

    ScriptedFeed* feed = nullptr;
    std::unique_ptr<DataSource> source;
    twain::abi::Identity application{};
};

} // namespace paperline::sources

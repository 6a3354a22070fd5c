// An application that scans through the real manager, loader stub and worker process, and never
// trusts what it is told.
#pragma once

#include "sources/framework/ScanTypes.h"
#include "tests/support/TestFolder.h"
#include "twain/records/StandardRecords.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace paperline::sources {

struct ScannedPage {
    twain::abi::ImageInfo info{};
    std::vector<uint8_t> bytes; // as the strips brought them, YOffset in mind
    uint16_t lastCode = 0;
    int strips = 0;
};

struct ScanResult {
    uint16_t openCode = 0;
    uint16_t enableCode = 0;
    uint16_t condition = 0; // after the first call that was no success
    std::vector<ScannedPage> pages;
    uint16_t endCode = 0; // of the last MSG_ENDXFER
    uint16_t lastCount = 0;
    bool closed = false;
};

// Folders of a test, with no user data sources, and the manager of this build tree or of another
// one.
class ManagerScan {
public:
    // System data sources lie below `root`; empty: there are none.
    explicit ManagerScan(const std::filesystem::path& root = {});
    ~ManagerScan();
    ManagerScan(const ManagerScan&) = delete;
    ManagerScan& operator=(const ManagerScan&) = delete;

    const std::filesystem::path& folder() const { return folder_; }
    // Loads the manager and opens it; false when that fails.
    bool openManager(const std::filesystem::path& buildTree);
    std::vector<std::string> sourceNames();
    // One batch of the named source with these options; each page buffered whole.
    ScanResult scan(const std::string& product, const std::string& options);

private:
    uint16_t toSource(uint32_t group, uint16_t type, uint16_t message, void* data);
    uint16_t sourceCondition();
    bool select(const std::string& product);
    bool waitForReady();
    ScannedPage readPage();
    void readStrips(ScannedPage& page);
    void readBatch(ScanResult& result);

    const testing_support::TestFolder temporary_;
    const std::filesystem::path folder_ = temporary_.path();
    twain::abi::EntryFunction entry_ = nullptr;
    twain::abi::Identity application_{};
    twain::abi::Identity source_{};
};

// Pages at 50 dots per inch as the software scanner's device itself draws them.
std::vector<std::vector<uint8_t>> drawnPages(const std::string& mode, int pages);

// Options of small grey pages, and the check that so many of the three arrived whole.
inline const std::string smallPages = "resolution=50\nmode=Gray\n";
void expectWholePages(const ScanResult& result, size_t count, const std::string& what);

} // namespace paperline::sources

// What tests of SANE devices share: a private SANE configuration, pages kept in memory, and what
// scanimage makes of the same options.
#pragma once

#include "sources/worker/ScanDevice.h"
#include "tests/support/TestFolder.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace paperline::sources {

using OptionValues = std::vector<std::pair<std::string, std::string>>;

// A page as bytes: rows packed as PageFormat says.
struct KeptPage {
    PageFormat format;
    std::vector<uint8_t> bytes;
};

// Keeps every whole page.
class KeepingSink final : public PageSink {
public:
    [[nodiscard]] bool begin(const PageFormat& format) override;
    std::span<uint8_t> rows(int32_t first, int32_t count) override;
    void finish(int32_t heightPixels) override;
    std::vector<KeptPage> pages;

private:
    KeptPage page_;
};

// From now on the drivers in use stay in the process, so that what they leak has their name.
void keepDriversLoaded();

// A temporary folder whose SANE configuration has one backend; SANE_CONFIG_DIR points at it for as
// long as it lives.
class SaneConfiguration {
public:
    explicit SaneConfiguration(const std::string& backend, const std::string& lines = {});
    ~SaneConfiguration();
    SaneConfiguration(const SaneConfiguration&) = delete;
    SaneConfiguration& operator=(const SaneConfiguration&) = delete;
    const std::string& folder() const { return folder_.path(); }

private:
    testing_support::TestFolder folder_;
};

// The test backend with a scan area up to 300 mm and an A4 sheet chosen.
inline constexpr const char* testBackendLines = "number_of_devices 2\n"
                                                "resolution 50.0\n"
                                                "geometry_max 300\n"
                                                "br_x 210\n"
                                                "br_y 297\n";

// Runs scanimage with the same options and gives its pictures, as pages: lineart turned so that 0
// is black, 16-bit samples reduced to 8. Geometry is read from tl-x and so on. Empty when it fails.
std::vector<KeptPage>
scanimagePages(const std::string& device, const OptionValues& options, bool batch = false);

// The page of a PNM file as scanimage writes it: a scanner's padding at the end of lines is there
// too, though the header does not count it. None for anything else.
std::vector<KeptPage> parsePnm(const std::vector<uint8_t>& bytes);

// For messages of failed tests: the first byte where two pages differ, or that they are alike.
std::string difference(const KeptPage& one, const KeptPage& other);

} // namespace paperline::sources

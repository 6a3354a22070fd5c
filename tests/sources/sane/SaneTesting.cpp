#include "tests/sources/sane/SaneTesting.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <dlfcn.h>
#include <link.h>

#ifdef __SANITIZE_ADDRESS__
// The test backend's reader threads never free their buffers.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:libsane-";
}
#endif

namespace paperline::sources {

namespace {

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

struct Finished {
    std::vector<uint8_t> output;
    int exitCode = -1;
};

Finished finished(const std::string& command) {
    Finished result;
    FILE* const pipe = popen(command.c_str(), "re");
    std::array<uint8_t, 65536> block;
    while (pipe != nullptr) {
        const size_t count = std::fread(block.data(), 1, block.size(), pipe);
        if (count == 0)
            break;
        result.output.insert(
            result.output.end(), block.begin(), block.begin() + static_cast<ptrdiff_t>(count));
    }
    if (pipe != nullptr)
        result.exitCode = WEXITSTATUS(pclose(pipe));
    return result;
}

// The test backend cancels its reader inside the allocator now and then, and scanimage waits for it
// without end.
std::vector<uint8_t> outputOfScanimage(const std::string& words) {
    constexpr int tries = 3, timedOut = 124;
    Finished run;
    for (int i = 0; i < tries; ++i) {
        run = finished("timeout 20 scanimage --format=pnm " + words + " 2>/dev/null");
        if (run.exitCode != timedOut)
            break;
    }
    return std::move(run.output);
}

// scanimage wants the scan area as a corner and a size.
std::string geometryWords(const OptionValues& options) {
    std::array<double, 4> edges{0, 0, -1, -1};
    const std::array<const char*, 4> names{"tl-x", "tl-y", "br-x", "br-y"};
    for (const auto& [name, value] : options)
        for (size_t i = 0; i < names.size(); ++i)
            if (name == names[i])
                edges[i] = std::strtod(value.c_str(), nullptr);
    std::string words;
    const auto add = [&words](const char* word, double number) {
        words += std::string(" ") + word + " " + std::to_string(number);
    };
    if (edges[2] >= 0) {
        add("-l", edges[0]);
        add("-x", edges[2] - edges[0]);
    }
    if (edges[3] >= 0) {
        add("-t", edges[1]);
        add("-y", edges[3] - edges[1]);
    }
    return words;
}

// A number of a PNM header, and the byte after it.
int headerNumber(const std::vector<uint8_t>& bytes, size_t& place) {
    const auto at = [&] { return place < bytes.size() ? static_cast<int>(bytes[place]) : -1; };
    while (at() == '#' || at() == ' ' || at() == '\n') {
        if (at() == '#')
            while (at() != '\n' && at() != -1)
                ++place;
        ++place;
    }
    int number = 0;
    for (; at() >= '0' && at() <= '9'; ++place)
        number = number * 10 + (at() - '0');
    ++place;
    return number;
}

int keepDriver(dl_phdr_info* object, size_t, void*) {
    if (std::strstr(object->dlpi_name, "/libsane-") != nullptr)
        (void)dlopen(object->dlpi_name, RTLD_NOW | RTLD_NODELETE);
    return 0;
}

} // namespace

void keepDriversLoaded() {
    dl_iterate_phdr(keepDriver, nullptr);
}

bool KeepingSink::begin(const PageFormat& format) {
    page_ = {format, {}};
    if (format.heightPixels > 0)
        page_.bytes.assign(static_cast<size_t>(format.bytesPerRow() * format.heightPixels), 0xAA);
    return true;
}

std::span<uint8_t> KeepingSink::rows(int32_t first, int32_t count) {
    const auto bytesPerRow = static_cast<size_t>(page_.format.bytesPerRow());
    const size_t end = (static_cast<size_t>(first) + static_cast<size_t>(count)) * bytesPerRow;
    if (end > page_.bytes.size()) {
        if (page_.format.heightPixels >= 0)
            return {};
        page_.bytes.resize(end, 0xAA);
    }
    return std::span(page_.bytes)
        .subspan(static_cast<size_t>(first) * bytesPerRow,
                 static_cast<size_t>(count) * bytesPerRow);
}

void KeepingSink::finish(int32_t heightPixels) {
    page_.format.heightPixels = heightPixels;
    page_.bytes.resize(static_cast<size_t>(page_.format.bytesPerRow() * heightPixels));
    pages.push_back(std::move(page_));
}

SaneConfiguration::SaneConfiguration(const std::string& backend, const std::string& lines) {
    std::ofstream(folder_ / "dll.conf") << backend << "\n";
    std::ofstream(folder_ / (backend + ".conf")) << lines;
    setenv("SANE_CONFIG_DIR", folder_.path().c_str(), 1);
}

SaneConfiguration::~SaneConfiguration() {
    unsetenv("SANE_CONFIG_DIR");
}

std::vector<KeptPage>
scanimagePages(const std::string& device, const OptionValues& options, bool batch) {
    std::string words = "-d " + quoted(device);
    for (const auto& [name, value] : options)
        if (name != "tl-x" && name != "tl-y" && name != "br-x" && name != "br-y")
            words += " " + quoted("--" + name + "=" + value);
    words += geometryWords(options);
    if (!batch)
        return parsePnm(outputOfScanimage(words));
    // scanimage --batch writes a file for each page, counted from 1.
    const testing_support::TestFolder folder;
    (void)outputOfScanimage(words + " --batch=" + quoted(folder / "%d.pnm"));
    std::vector<KeptPage> pages;
    for (int i = 1; std::filesystem::exists(folder / (std::to_string(i) + ".pnm")); ++i)
        for (KeptPage& page :
             parsePnm(finished("cat " + quoted(folder / (std::to_string(i) + ".pnm"))).output))
            pages.push_back(std::move(page));
    return pages;
}

std::vector<KeptPage> parsePnm(const std::vector<uint8_t>& bytes) {
    if (bytes.size() < 3 || bytes[0] != 'P')
        return {};
    const char kind = static_cast<char>(bytes[1]);
    size_t place = 2;
    KeptPage page;
    page.format.widthPixels = headerNumber(bytes, place);
    page.format.heightPixels = headerNumber(bytes, place);
    page.format.bitsPerPixel = kind == '4' ? 1 : kind == '5' ? 8 : 24;
    const size_t sampleBytes = kind != '4' && headerNumber(bytes, place) > 255 ? 2 : 1;
    const auto height = static_cast<size_t>(page.format.heightPixels);
    const auto samples = static_cast<size_t>(page.format.bytesPerRow());
    if (height == 0 || place > bytes.size())
        return {};
    const size_t lineBytes = (bytes.size() - place) / height;
    if (lineBytes < samples * sampleBytes)
        return {};
    for (size_t row = 0; row < height; ++row)
        for (size_t i = 0; i < samples; ++i) {
            const uint8_t* sample = bytes.data() + place + row * lineBytes + i * sampleBytes;
            if (kind == '4')
                page.bytes.push_back(static_cast<uint8_t>(~sample[0]));
            else if (sampleBytes == 1)
                page.bytes.push_back(sample[0]);
            else
                // 65535 / 255 is 257: the nearest of 256 levels.
                page.bytes.push_back(
                    static_cast<uint8_t>(((sample[0] << 8 | sample[1]) + 128) / 257));
        }
    return {std::move(page)};
}

std::string difference(const KeptPage& one, const KeptPage& other) {
    const auto sizeText = [](const KeptPage& page) {
        return std::to_string(page.format.widthPixels) + "x" +
               std::to_string(page.format.heightPixels) + "x" +
               std::to_string(page.format.bitsPerPixel);
    };
    if (sizeText(one) != sizeText(other))
        return "sizes differ: " + sizeText(one) + " and " + sizeText(other);
    const auto bytesPerRow = static_cast<size_t>(one.format.bytesPerRow());
    const int tail = one.format.bitsPerPixel == 1 ? one.format.widthPixels % 8 : 0;
    for (size_t i = 0; i < std::min(one.bytes.size(), other.bytes.size()); ++i) {
        // Bits past the last pixel of a lineart row mean nothing.
        const bool lastOfRow = tail != 0 && i % bytesPerRow == bytesPerRow - 1;
        const auto mask = static_cast<uint8_t>(lastOfRow ? 0xFF << (8 - tail) : 0xFF);
        if ((one.bytes[i] & mask) != (other.bytes[i] & mask))
            return "byte " + std::to_string(i % bytesPerRow) + " of row " +
                   std::to_string(i / bytesPerRow) + " differs: " + std::to_string(one.bytes[i]) +
                   " and " + std::to_string(other.bytes[i]);
    }
    return one.bytes.size() == other.bytes.size() ? "alike" : "one is longer";
}

} // namespace paperline::sources

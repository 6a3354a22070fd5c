// Whole scans by the program, from the software scanner to files, against what their parts take:
// the encoder, and a copy of the page.
#include "base/FileFormats.h"
#include "bench/Cases.h"
#include "bench/Process.h"
#include "codecs/bmp/BmpFile.h"
#include "output/PageCodecs.h"
#include "platform/files/FileContent.h"

#include <cctype>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace paperline::bench {

namespace {

constexpr int morePages = 10; // than one, whose time takes start and end away
constexpr int fewestPagesAMinute = 200;
constexpr double encoderShare = 1.15;
constexpr double copyShare = 1.4;

class ScanBench {
public:
    ScanBench(const PageSet& pages, int different) : pages_(pages), folder_(pages.folder()) {
        std::error_code error;
        for (const char* name : {"/sheets", "/home", "/home/data", "/home/run", "/home/sane"})
            std::filesystem::create_directory(folder_ + name, error);
        std::filesystem::permissions(folder_ + "/home/run", std::filesystem::perms::owner_all);
        const std::string noBackend = "\n"; // else every start would look for scanners
        (void)writeFile(folder_ + "/home/sane/dll.conf",
                        {reinterpret_cast<const uint8_t*>(noBackend.data()), noBackend.size()});
        for (int number = 1; number <= different; ++number) {
            const std::string file = pages.page(PageKind::colour, 300, number).pnmFile;
            std::filesystem::create_hard_link(
                file, folder_ + "/sheets/" + std::to_string(number) + ".ppm", error);
        }
        different_ = different;
    }

    ResultRow measure(const FileFormat& format, int rounds) {
        std::vector<double> pageTimes, encoderTimes, copyTimes;
        for (int round = 0; round < rounds; ++round) {
            const double one = scan(format, 1);
            const double all = scan(format, 1 + morePages);
            if (one <= 0 || all <= 0)
                return {nameOf(format), {}, "encoder and cp", {}, {}, {}};
            // A start that took longer than all pages together says nothing of them; the whole
            // scan, start included, is an upper bound then.
            pageTimes.push_back(all > one ? (all - one) / morePages : all / (1 + morePages));
            for (int number = 1; number <= different_; ++number) {
                const BenchPage page = pages_.page(PageKind::colour, 300, number);
                encoderTimes.push_back(encode(format, *page.pixels));
                copyTimes.push_back(
                    runProcess({"cp", page.pnmFile, folder_ + "/copied"}).milliseconds);
            }
        }
        return row(format, median(pageTimes), median(encoderTimes), median(copyTimes));
    }

private:
    static std::string nameOf(const FileFormat& format) {
        return std::string("scan to ") + format.listName + ", a page";
    }

    static ResultRow row(const FileFormat& format, double page, double encoder, double copy) {
        ResultRow result{nameOf(format), {page, 0, 0}, "", {}, {}, {}};
        result.toolName = "1.15 x encoder (" + decimalText(encoder, 1) + " ms) + 1.4 x cp (" +
                          decimalText(copy, 1) + " ms)";
        result.tool.milliseconds = encoderShare * encoder + copyShare * copy;
        result.target.time = 1.0;
        const double perMinute = 60'000 / page;
        result.checks = {{decimalText(perMinute, 0) + " pages a minute, at least 200",
                          perMinute >= fewestPagesAMinute}};
        return result;
    }

    // Milliseconds of the whole program; 0 when it failed.
    double scan(const FileFormat& format, int count) {
        const std::string home = folder_ + "/home";
        const std::string target = folder_ + "/scanned";
        std::error_code error;
        std::filesystem::remove_all(target, error);
        const std::vector<std::string> command{"env",
                                               "HOME=" + home,
                                               "XDG_DATA_HOME=" + home + "/data",
                                               "XDG_RUNTIME_DIR=" + home + "/run",
                                               "PAPERLINE_SCRATCH=" + home + "/scratch",
                                               "PAPERLINE_SOFTWARE_SCANNER=1",
                                               "SANE_CONFIG_DIR=" + home + "/sane",
                                               program(),
                                               "scan",
                                               "--source",
                                               "Software Scanner",
                                               "--option",
                                               "pages=" + folder_ + "/sheets",
                                               "--option",
                                               "count=" + std::to_string(count),
                                               "--format",
                                               format.commandName,
                                               "--folder",
                                               target};
        const std::string messages = home + "/messages";
        const ProcessResult run = runProcess(command, {}, messages);
        if (!run.succeeded)
            (void)runProcess({"cat", messages}, "/dev/stderr");
        std::filesystem::remove_all(target, error);
        return run.succeeded ? run.milliseconds : 0;
    }

    static std::string program() {
        std::error_code error;
        const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
        return (self.parent_path().parent_path() / "bin/paperline").string();
    }

    static double encode(const FileFormat& format, const BitmapImageRep& page) {
        const double begin = millisecondsNow();
        bool succeeded = false;
        const Density density{300, 300};
        switch (format.imageType) {
        case imageTypeJpeg:
            succeeded = pageCodecs().jpeg(page, density).has_value();
            break;
        case imageTypePng:
            succeeded = pageCodecs().png(page, density).has_value();
            break;
        case imageTypeGif:
            succeeded = pageCodecs().gif(page, density).has_value();
            break;
        case imageTypeTiff:
            succeeded = pageCodecs().tiff(page, density).has_value();
            break;
        default:
            succeeded = encodeBmp(page);
        }
        return succeeded ? millisecondsNow() - begin : 0;
    }

    static bool encodeBmp(const BitmapImageRep& page) {
        const BmpPageLayout layout{
            page.pixelsWide(), page.pixelsHigh(), page.bitsPerPixel(), page.bytesPerRow()};
        std::optional<BmpBlock> block = BmpBlock::allocate(layout);
        if (!block)
            return false;
        block->copyRowsBottomUp(page.bitmapData().data());
        swapRedAndBlue(block->rows(), page.pixelsHigh(), page.bytesPerRow());
        return !block->fileBytes(makeBmpHeader(layout, 300, 300), bmpPixelOffset(24)).empty();
    }

    const PageSet& pages_;
    std::string folder_;
    int different_ = 0;
};

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    ScanBench bench(pages, std::min(options.pages, 10));
    std::vector<ResultRow> rows;
    for (const FileFormat& format : fileFormats)
        rows.push_back(bench.measure(format, options.rounds));
    return rows;
}

} // namespace

std::vector<BenchCase> scanCases() {
    return {{"scan", run}};
}

} // namespace paperline::bench

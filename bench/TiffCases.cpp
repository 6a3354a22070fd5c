// TIFF pages against tiffcp with LZW and the horizontal predictor, and many pages in one file
// against tiffcp and cat.
#include "bench/EncoderComparison.h"
#include "bench/JoinComparison.h"
#include "bench/Process.h"
#include "output/PageCodecs.h"
#include "platform/files/Files.h"

#include <algorithm>

namespace paperline::bench {

namespace {

EncoderComparison comparison(PageKind kind, int dpi, const std::string& work) {
    EncoderComparison result = comparisonOf(work, kind, dpi, pageCodecs().tiff);
    result.toolName = "tiffcp -c lzw:2";
    result.prepare = [](const std::string& pnmFile) {
        const std::string plain = pnmFile + ".tif";
        if (!fileExists(plain))
            (void)runProcess(
                {"pnmtotiff", "-quiet", "-truecolor", "-none", "-output=" + plain, pnmFile});
        return plain;
    };
    const std::string compression = kind == PageKind::bilevel ? "lzw" : "lzw:2";
    result.tool = [compression](const std::string& input, const std::string& output) {
        return ToolCommand{{"tiffcp", "-c", compression, input, output}};
    };
    if (kind == PageKind::colour) {
        result.target.time = 1 / 1.8;
        result.target.size = 1.01;
    }
    return result;
}

JoinComparison joining(const std::vector<std::string>& files) {
    JoinComparison result;
    result.work = "TIFF, " + std::to_string(files.size()) + " pages joined";
    result.workName = "join-tiff";
    result.pageFiles = files;
    result.target.peakKilobytes = 30 * 1024;
    return result;
}

std::vector<ResultRow> joinRows(const PageSet& pages, const BenchOptions& options) {
    const int count = std::min(100, 5 * options.pages);
    const std::vector<std::string> files = encodedPages(pages, options.pages, count, ".tif");
    JoinComparison copying = joining(files);
    copying.toolName = "cat";
    copying.tool = [](const std::vector<std::string>& from, const std::string& /*to*/) {
        std::vector<std::string> words{"cat"};
        words.insert(words.end(), from.begin(), from.end());
        return words;
    };
    copying.writesStandardOutput = true;
    copying.target.time = 1.3;
    copying.rounds = 5;
    JoinComparison encoding = joining(files);
    encoding.toolName = "tiffcp -c lzw:2";
    encoding.tool = [](const std::vector<std::string>& from, const std::string& to) {
        std::vector<std::string> words{"tiffcp", "-c", "lzw:2"};
        words.insert(words.end(), from.begin(), from.end());
        words.push_back(to);
        return words;
    };
    encoding.target.time = 1.0 / 30;
    encoding.rounds = 1; // half a minute
    std::vector<ResultRow> rows{compareJoin(copying, pages.folder()),
                                compareJoin(encoding, pages.folder())};
    removePath(joinedFile(pages.folder()));
    return rows;
}

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    return compareEncoders({comparison(PageKind::colour, 300, "TIFF, colour"),
                            comparison(PageKind::colour, 600, "TIFF, colour 600 dpi"),
                            comparison(PageKind::grey, 300, "TIFF, grey"),
                            comparison(PageKind::bilevel, 300, "TIFF, bilevel")},
                           pages,
                           options);
}

} // namespace

std::vector<BenchCase> tiffCases() {
    return {{"tiff", run}, {"tiff-join", joinRows}};
}

} // namespace paperline::bench

// JPEG at our quality against cjpeg at the same quality and sampling.
#include "bench/EncoderComparison.h"
#include "output/PageCodecs.h"

namespace paperline::bench {

namespace {

EncoderComparison comparison(PageKind kind, int dpi, const std::string& work) {
    EncoderComparison result = comparisonOf(work, kind, dpi, pageCodecs().jpeg);
    result.toolName = "cjpeg";
    result.tool = [](const std::string& input, const std::string& output) {
        return ToolCommand{{"cjpeg",
                            "-quality",
                            std::to_string(jpegQuality),
                            "-sample",
                            "2x2",
                            "-outfile",
                            output,
                            input}};
    };
    result.target.time = 0.9;
    return result;
}

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    return compareEncoders({comparison(PageKind::colour, 300, "JPEG, colour"),
                            comparison(PageKind::colour, 600, "JPEG, colour 600 dpi"),
                            comparison(PageKind::grey, 300, "JPEG, grey")},
                           pages,
                           options);
}

} // namespace

std::vector<BenchCase> jpegCases() {
    return {{"jpeg", run}};
}

} // namespace paperline::bench

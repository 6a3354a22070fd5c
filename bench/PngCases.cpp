// PNG against pnmtopng at its default.
#include "bench/EncoderComparison.h"
#include "output/PageCodecs.h"

namespace paperline::bench {

namespace {

struct PngLimits {
    double time, size;
};

EncoderComparison
comparison(PageKind kind, int dpi, const std::string& work, const PngLimits& limits) {
    EncoderComparison result = comparisonOf(work, kind, dpi, pageCodecs().png);
    result.toolName = "pnmtopng";
    result.tool = [](const std::string& input, const std::string& /*output*/) {
        return ToolCommand{{"pnmtopng", input}, true};
    };
    result.target.time = limits.time;
    result.target.size = limits.size;
    if (kind != PageKind::bilevel)
        result.mostRounds = 1;
    if (dpi > 300)
        result.mostPages = 2;
    return result;
}

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    constexpr PngLimits shades{1.0 / 12, 1.05};
    constexpr PngLimits bits{1 / 3.5, 1.0};
    return compareEncoders({comparison(PageKind::colour, 300, "PNG, colour", shades),
                            comparison(PageKind::colour, 600, "PNG, colour 600 dpi", shades),
                            comparison(PageKind::grey, 300, "PNG, grey", shades),
                            comparison(PageKind::bilevel, 300, "PNG, bilevel", bits)},
                           pages,
                           options);
}

} // namespace

std::vector<BenchCase> pngCases() {
    return {{"png", run}};
}

} // namespace paperline::bench

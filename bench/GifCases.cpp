// GIF against ImageMagick's convert, which reduces and dithers the colours as well.
#include "bench/EncoderComparison.h"
#include "output/PageCodecs.h"

namespace paperline::bench {

namespace {

EncoderComparison comparison(PageKind kind, const std::string& work) {
    EncoderComparison result;
    result.work = work;
    result.kind = kind;
    result.encode = [](const BitmapImageRep& page) { return pageCodecs().gif(page, {}); };
    result.toolName = "convert";
    result.tool = [](const std::string& input, const std::string& output) {
        return ToolCommand{{"convert", input, "gif:" + output}};
    };
    if (kind == PageKind::colour)
        result.target.time = 1.0 / 6;
    return result;
}

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    return {compareEncoder(comparison(PageKind::colour, "GIF, colour"), pages, options),
            compareEncoder(comparison(PageKind::grey, "GIF, grey"), pages, options),
            compareEncoder(comparison(PageKind::bilevel, "GIF, bilevel"), pages, options)};
}

} // namespace

std::vector<BenchCase> gifCases() {
    return {{"gif", run}};
}

} // namespace paperline::bench

// GIF against ImageMagick's convert, which reduces and dithers the colours as well. Pages of 600
// dpi are left out: there convert works on disk by its own policy, and takes minutes.
#include "bench/EncoderComparison.h"
#include "bench/Likeness.h"
#include "bench/Process.h"
#include "codecs/pictures/PictureReader.h"
#include "codecs/pixels/DecodedImage.h"
#include "output/PageCodecs.h"
#include "platform/files/FileContent.h"

#include <algorithm>

namespace paperline::bench {

namespace {

constexpr int comparedPages = 3; // by their looks
constexpr double mostDecibelsBelow = 2;

EncoderComparison comparison(PageKind kind, const std::string& work) {
    EncoderComparison result;
    result.work = work;
    result.kind = kind;
    result.encode = [](const BitmapImageRep& page) { return pageCodecs().gif(page, {}); };
    result.toolName = "convert";
    result.tool = [](const std::string& input, const std::string& output) {
        return ToolCommand{{"convert", input, "gif:" + output}};
    };
    result.mostRounds = 1;
    if (kind == PageKind::colour)
        result.target.time = 1.0 / 6;
    return result;
}

// Of a GIF file against the page that it shows; 0 when it cannot be read.
double likeness(const std::string& gifFile, const BenchPage& page) {
    const std::string pnmFile = gifFile + ".pnm";
    if (!runProcess({"giftopnm", "-quiet", gifFile}, pnmFile).succeeded)
        return 0;
    constexpr uint64_t mostPixels = uint64_t{1} << 30;
    const std::optional<DecodedImage> shown = readPicture(pnmFile, 0, mostPixels);
    return shown ? blurredPsnr(*shown->image, *page.pixels) : 0;
}

Check checkLooks(const PageSet& pages, const BenchOptions& options) {
    std::vector<double> ours, theirs;
    for (int number = 1; number <= std::min(options.pages, comparedPages); ++number) {
        const BenchPage page = pages.page(PageKind::colour, 300, number);
        const auto bytes = pageCodecs().gif(*page.pixels, {});
        const std::string file = pages.folder() + "/looks.gif";
        if (bytes && writeFile(file, *bytes))
            ours.push_back(likeness(file, page));
        if (runProcess({"convert", page.pnmFile, file}).succeeded)
            theirs.push_back(likeness(file, page));
    }
    const double mine = median(ours);
    const double other = median(theirs);
    return {"blurred PSNR " + decimalText(mine, 1) + " dB (convert " + decimalText(other, 1) +
                " dB), at most 2 dB below",
            mine > 0 && other > 0 && mine >= other - mostDecibelsBelow};
}

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    std::vector<ResultRow> rows = compareEncoders({comparison(PageKind::colour, "GIF, colour"),
                                                   comparison(PageKind::grey, "GIF, grey"),
                                                   comparison(PageKind::bilevel, "GIF, bilevel")},
                                                  pages,
                                                  options);
    rows[0].checks.push_back(checkLooks(pages, options));
    return rows;
}

} // namespace

std::vector<BenchCase> gifCases() {
    return {{"gif", run}};
}

} // namespace paperline::bench

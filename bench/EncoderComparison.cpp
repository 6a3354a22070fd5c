#include "bench/EncoderComparison.h"

#include "bench/Process.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace paperline::bench {

namespace {

class Contest {
public:
    Contest(const EncoderComparison& comparison, const PageSet& pages)
        : comparison_(comparison), outputFile_(pages.folder() + "/tool-output") {}

    void meet(const BenchPage& page, int rounds) {
        const std::string input =
            comparison_.prepare ? comparison_.prepare(page.pnmFile) : page.pnmFile;
        for (int round = 0; round < rounds && !failed_; ++round) {
            encode(comparison_.encode, page, ourTimes_, round == 0 ? &ourBytes_ : nullptr);
            if (comparison_.library)
                encode(comparison_.library, page, toolTimes_, round == 0 ? &toolBytes_ : nullptr);
            else
                runTool(input, round == 0);
        }
    }

    ResultRow result() const {
        ResultRow row{comparison_.work, {}, comparison_.toolName, {}, comparison_.target, {}};
        row.ours = {median(ourTimes_), ourBytes_, 0};
        if (!failed_)
            row.tool = {median(toolTimes_), toolBytes_, 0};
        return row;
    }

private:
    void encode(const EncoderComparison::Encode& encoder,
                const BenchPage& page,
                std::vector<double>& times,
                int64_t* sum) {
        const double begin = millisecondsNow();
        const auto bytes = encoder(*page.pixels);
        times.push_back(millisecondsNow() - begin);
        failed_ = failed_ || !bytes;
        if (sum != nullptr && bytes)
            *sum += static_cast<int64_t>(bytes->size());
    }

    void runTool(const std::string& input, bool counts) {
        const ToolCommand command = comparison_.tool(input, outputFile_);
        const ProcessResult run =
            runProcess(command.words, command.writesStandardOutput ? outputFile_ : std::string());
        toolTimes_.push_back(run.milliseconds);
        std::error_code error;
        const auto size = std::filesystem::file_size(outputFile_, error);
        if (!run.succeeded || error)
            std::fprintf(stderr, "%s failed on %s\n", command.words[0].c_str(), input.c_str());
        failed_ = failed_ || !run.succeeded || error;
        if (counts && !error)
            toolBytes_ += static_cast<int64_t>(size);
    }

    const EncoderComparison& comparison_;
    std::string outputFile_;
    std::vector<double> ourTimes_, toolTimes_;
    int64_t ourBytes_ = 0, toolBytes_ = 0;
    bool failed_ = false;
};

int pageCount(const EncoderComparison& comparison, const BenchOptions& options) {
    const int wanted = comparison.dpi > 300 ? options.pages / 4 : options.pages;
    return std::min(wanted, comparison.mostPages);
}

} // namespace

EncoderComparison
comparisonOf(const std::string& work, PageKind kind, int dpi, const PageCodecs::Encoder& encoder) {
    EncoderComparison result;
    result.work = work;
    result.kind = kind;
    result.dpi = dpi;
    const double density = dpi;
    result.encode = [density, encoder](const BitmapImageRep& page) {
        return encoder(page, {density, density});
    };
    return result;
}

std::vector<ResultRow> compareEncoders(const std::vector<EncoderComparison>& comparisons,
                                       const PageSet& pages,
                                       const BenchOptions& options) {
    std::vector<ResultRow> rows;
    for (const EncoderComparison& each : comparisons) {
        const int count = pageCount(each, options);
        Contest contest(each, pages);
        for (int number = 1; number <= count; ++number)
            contest.meet(pages.page(each.kind, each.dpi, number),
                         std::min(options.rounds, each.mostRounds));
        if (count > 0)
            rows.push_back(contest.result());
    }
    return rows;
}

} // namespace paperline::bench

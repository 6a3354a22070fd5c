// One of our encoders, in process, against a public tool, which runs as one process for each page,
// or against a library, in process, too.
#pragma once

#include "bench/Cases.h"
#include "bench/PageSet.h"
#include "bench/ResultTable.h"
#include "output/PageCodecs.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace paperline::bench {

struct ToolCommand {
    std::vector<std::string> words;
    bool writesStandardOutput = false; // else the command names the output file
};

struct EncoderComparison {
    using Encode = std::function<std::optional<std::vector<uint8_t>>(const BitmapImageRep& page)>;

    std::string work; // "PNG, colour"
    PageKind kind = PageKind::colour;
    int dpi = 300;
    Encode encode;
    std::string toolName;
    std::function<ToolCommand(const std::string& inputFile, const std::string& outputFile)> tool;
    Encode library; // instead of a tool
    // Makes the tool's input out of a PNM file and gives its name; not timed. Without it the tool
    // reads the PNM file.
    std::function<std::string(const std::string& pnmFile)> prepare;
    Target target;
    int mostRounds = 1000; // for tools that take seconds
    int mostPages = 1000;
};

// Of pages of that kind, by one of the program's encoders; the tool is the caller's.
EncoderComparison
comparisonOf(const std::string& work, PageKind kind, int dpi, const PageCodecs::Encoder& encoder);

// One row for each. Page by page and round by round, both in turn: whatever else the machine does
// meets both. Pages of 600 dpi are a quarter as many; with less than one the row is left out.
std::vector<ResultRow> compareEncoders(const std::vector<EncoderComparison>& comparisons,
                                       const PageSet& pages,
                                       const BenchOptions& options);

} // namespace paperline::bench

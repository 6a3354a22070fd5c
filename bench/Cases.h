// What can be measured. Each format's file gives its cases; Cases.cpp joins them into one list.
#pragma once

#include "bench/PageSet.h"
#include "bench/ResultTable.h"

#include <functional>
#include <string>
#include <vector>

namespace paperline::bench {

struct BenchOptions {
    int pages = 20; // at 300 dpi; a quarter of them at 600
    int rounds = 3; // for each page
};

struct BenchCase {
    std::string name; // as the command line names it
    std::function<std::vector<ResultRow>(const PageSet& pages, const BenchOptions& options)> run;
};

// Something that is measured in a process of its own; gives the process's exit code. The words are
// those of runWork behind the name.
struct BenchWork {
    std::string name;
    std::function<int(const std::vector<std::string>& words)> run;
};

std::vector<BenchCase> allCases();
std::vector<BenchWork> allWorks();

std::vector<BenchCase> gifCases();
std::vector<BenchCase> jpegCases();
std::vector<BenchCase> pdfCases();
std::vector<BenchCase> pngCases();
std::vector<BenchCase> scanCases();
std::vector<BenchCase> tiffCases();

std::vector<BenchWork> joinWorks();

} // namespace paperline::bench

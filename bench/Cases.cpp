#include "bench/Cases.h"

namespace paperline::bench {

std::vector<BenchCase> allCases() {
    std::vector<BenchCase> all;
    for (const auto& casesOf : {jpegCases, pngCases, tiffCases, gifCases, pdfCases, scanCases})
        for (BenchCase& each : casesOf())
            all.push_back(std::move(each));
    return all;
}

std::vector<BenchWork> allWorks() {
    return joinWorks();
}

} // namespace paperline::bench

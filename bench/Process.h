// Runs a public tool, and says what it took.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace paperline::bench {

struct ProcessResult {
    bool succeeded = false;  // started, and ended with 0
    double milliseconds = 0; // wall clock, start and end of the process included
    int64_t peakKilobytes = 0;
};

// The command's first word is looked up in PATH. With `outputFile` its standard output goes there,
// else it is dropped. Standard error is the caller's.
ProcessResult runProcess(const std::vector<std::string>& command,
                         const std::string& outputFile = {});

// Runs this very program with "--work" and these words (bench/Cases.h): a fresh process whose peak
// memory is that of the work alone.
ProcessResult runWork(const std::vector<std::string>& words);

double millisecondsNow(); // of a steady clock

} // namespace paperline::bench

// Runs a public tool, and says what it took.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace paperline::bench {

struct ProcessResult {
    bool succeeded = false;  // started, and ended with 0
    double milliseconds = 0; // wall clock, start and end of the process included
};

// The command's first word is looked up in PATH. With `outputFile` its standard output goes there,
// else it is dropped. Standard error goes to `errorFile`, else it is the caller's.
ProcessResult runProcess(const std::vector<std::string>& command,
                         const std::string& outputFile = {},
                         const std::string& errorFile = {});

struct WorkResult {
    ProcessResult process;
    int64_t peakKilobytes = 0; // 0: unknown
};

// Runs this very program with "--work" and these words (bench/Cases.h): a fresh process whose peak
// memory is that of the work alone. Its report goes through a file in `folder`.
WorkResult runWork(const std::vector<std::string>& words, const std::string& folder);

// What that process reports. The system's count for a child that has ended would hold the peak of
// the process that started it, too.
int64_t ownPeakKilobytes();

double millisecondsNow(); // of a steady clock

} // namespace paperline::bench

// One of our joiners, in a process of its own, against a public tool: many page files into one.
#pragma once

#include "bench/Cases.h"
#include "bench/Process.h"

#include <functional>
#include <string>
#include <vector>

namespace paperline::bench {

struct JoinComparison {
    std::string work;     // "TIFF, 100 pages"
    std::string workName; // of joinWorks
    std::vector<std::string> pageFiles;
    std::string toolName;
    // Writes the pages to the output file; with `writesStandardOutput` the words do not name it.
    std::function<std::vector<std::string>(const std::vector<std::string>& pageFiles,
                                           const std::string& outputFile)>
        tool;
    bool writesStandardOutput = false;
    Target target;
    int rounds = 3;
};

// Round by round, both in turn. Files are made in `folder`; ours is left there as joinedFile says.
ResultRow compareJoin(const JoinComparison& comparison, const std::string& folder);
std::string joinedFile(const std::string& folder);

// One of joinWorks over these pages, into joinedFile.
WorkResult runJoin(const std::string& workName,
                   const std::vector<std::string>& pageFiles,
                   const std::string& folder);

// `count` names for the encoded colour pages, the same few over and over.
std::vector<std::string>
encodedPages(const PageSet& pages, int different, int count, const std::string& extension);

} // namespace paperline::bench

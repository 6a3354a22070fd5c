// The commands that run without a window: "scan" and "sources".
#pragma once

#include "app/CommandLine.h"

namespace paperline {

// Where the commands' results go; everything else that is written to standard output reaches
// standard error. Call once, before any library can write.
int takeStandardOutputForResults();

// Removes the command's scratch folder, unless it holds pages that found no other place.
void endScratch();

int runScanCommand(const ScanRequest& request, int resultDescriptor);
int runListSources(int resultDescriptor);
int runListOptions(const std::string& sourceName, int resultDescriptor);

} // namespace paperline

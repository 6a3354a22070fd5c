// The commands that run without a window: "scan" and "sources".
#pragma once

#include "app/CommandLine.h"

namespace paperline {

// The descriptor for results. From now on standard output leads to standard error, so that nothing
// else gets between them. Call once, before any library can write.
int takeStandardOutputForResults();

// Removes the command's scratch folder, unless there are pages in it that could not be moved.
void endScratch();

int runScanCommand(const ScanRequest& request, int resultDescriptor);
int runListSources(int resultDescriptor);
int runListOptions(const std::string& sourceName, int resultDescriptor);

} // namespace paperline

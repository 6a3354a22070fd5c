// Multi-page files and PDF files made of staged pages, called by the dispatch, at the end of a
// batch, and by the controller's operations that their trace is named after.
#pragma once

#include "output/PageWriters.h"

#include <string>
#include <vector>

namespace paperline {

// What became of the joined file in the temporary root.
struct JoinOutcome {
    int32_t code = 0;   // the operation's result: negative ends the scan, -2 for lack of disk space
    std::string reason; // why there is no file; empty when there is one, or no page to join
    std::vector<std::string> leftOut; // unreadable pages
};

[[nodiscard]] JoinOutcome joinTiffAt300Dpi(const std::string& folder);
[[nodiscard]] JoinOutcome joinTiffUnchanged(const std::string& folder);
[[nodiscard]] JoinOutcome joinPdf(const std::string& folder);

// A PDF file of all pages in the folder. 1, or -2.
[[nodiscard]] SaveOutcome writePdf(const std::string& folder, const PageWriteTarget& target);

} // namespace paperline

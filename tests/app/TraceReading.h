// The debug trace as text that can be compared with a golden file.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace paperline::test {

// Entries of a trace file ("In  1: init"), each checked to begin with a byte-order mark and a time
// of day, which are dropped; the file itself to begin with the mark of its creation.
std::vector<std::string> readTrace(const std::string& path);

// Whole text as it is checked in: every key of `names` replaced by its name, times of day and
// sizes that the toolkit chooses masked, what the toolkit asks on its own (repainting, rows of a
// list) left out.
std::string goldenText(const std::vector<std::string>& entries,
                       const std::map<std::string, std::string>& names);

// Compares with tests/app/golden/NAME.txt. With PAPERLINE_WRITE_GOLDEN set it writes that file
// instead and fails, so that nobody forgets to look at it.
void expectGolden(const std::string& name, const std::string& text);

} // namespace paperline::test

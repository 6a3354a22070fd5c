// Results as rows of one Markdown table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace paperline::bench {

struct Measured {
    double milliseconds = 0;   // median
    int64_t bytes = 0;         // of all pages together; 0: no size to tell
    int64_t peakKilobytes = 0; // 0: not measured
};

// Upper limits; an empty one is not asked for.
struct Target {
    std::optional<double> time; // ours by the tool's
    std::optional<double> size; // ours by the tool's
    std::optional<int64_t> peakKilobytes;
};

// Something else that was asked for, and whether it is so.
struct Check {
    std::string text;
    bool isMet = false;
};

struct ResultRow {
    std::string work;
    Measured ours;
    std::string toolName;
    Measured tool; // 0 milliseconds: the tool failed or is missing
    Target target;
    std::vector<Check> checks;
};

bool isMet(const ResultRow& row);

// Rows are printed as they come, below the head; a line about the machine goes before it, and one
// about its load behind the last row.
void printMachine();
void printTableHead();
void printRow(const ResultRow& row);
void printEnd(double seconds);

std::string decimalText(double value, int decimals);

double median(std::vector<double> values); // 0 of none

} // namespace paperline::bench

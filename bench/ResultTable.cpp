#include "bench/ResultTable.h"

#include <algorithm>
#include <cstdio>

namespace paperline::bench {

namespace {

std::string number(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string describe(const Measured& measured) {
    if (measured.milliseconds <= 0)
        return "failed";
    std::string text = number(measured.milliseconds, 1) + " ms";
    if (measured.bytes > 0)
        text += ", " + number(static_cast<double>(measured.bytes) / 1e6, 2) + " MB";
    if (measured.peakKilobytes > 0)
        text += ", peak " + number(static_cast<double>(measured.peakKilobytes) / 1024, 1) + " MiB";
    return text;
}

std::string describe(const Target& target) {
    std::string text;
    const auto add = [&text](const std::string& part) {
        text += (text.empty() ? "" : ", ") + part;
    };
    if (target.time)
        add("time " + number(*target.time, 3));
    if (target.size)
        add("size " + number(*target.size, 3));
    if (target.peakKilobytes)
        add("peak " + number(static_cast<double>(*target.peakKilobytes) / 1024, 1) + " MiB");
    return text;
}

double timeRatio(const ResultRow& row) {
    return row.tool.milliseconds > 0 ? row.ours.milliseconds / row.tool.milliseconds : 0;
}

double sizeRatio(const ResultRow& row) {
    return row.tool.bytes > 0
               ? static_cast<double>(row.ours.bytes) / static_cast<double>(row.tool.bytes)
               : 0;
}

} // namespace

bool isMet(const ResultRow& row) {
    if (row.ours.milliseconds <= 0 || row.tool.milliseconds <= 0)
        return false;
    const Target& target = row.target;
    return (!target.time || timeRatio(row) <= *target.time) &&
           (!target.size || sizeRatio(row) <= *target.size) &&
           (!target.peakKilobytes || row.ours.peakKilobytes <= *target.peakKilobytes);
}

void printTableHead() {
    std::printf("| work | Paperline | public tool | time ratio | size ratio | at most | met |\n"
                "|---|---|---|---|---|---|---|\n");
}

void printRow(const ResultRow& row) {
    const double sizes = sizeRatio(row);
    std::printf("| %s | %s | %s: %s | %s | %s | %s | %s |\n",
                row.work.c_str(),
                describe(row.ours).c_str(),
                row.toolName.c_str(),
                describe(row.tool).c_str(),
                number(timeRatio(row), 3).c_str(),
                sizes > 0 ? number(sizes, 4).c_str() : "",
                (describe(row.target) + (row.note.empty() ? "" : "; " + row.note)).c_str(),
                isMet(row) ? "yes" : "no");
    std::fflush(stdout);
}

double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    const size_t middle = values.size() / 2;
    std::nth_element(
        values.begin(), values.begin() + static_cast<std::ptrdiff_t>(middle), values.end());
    return values[middle];
}

} // namespace paperline::bench

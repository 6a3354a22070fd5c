#include "bench/ResultTable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace paperline::bench {

namespace {

std::string describe(const Measured& measured) {
    if (measured.milliseconds <= 0)
        return "failed";
    std::string text = decimalText(measured.milliseconds, 1) + " ms";
    if (measured.bytes > 0)
        text += ", " + decimalText(static_cast<double>(measured.bytes) / 1e6, 2) + " MB";
    if (measured.peakKilobytes > 0)
        text +=
            ", peak " + decimalText(static_cast<double>(measured.peakKilobytes) / 1024, 1) + " MiB";
    return text;
}

std::string describe(const Target& target) {
    std::string text;
    const auto add = [&text](const std::string& part) {
        text += (text.empty() ? "" : ", ") + part;
    };
    if (target.time)
        add("time " + decimalText(*target.time, 3));
    if (target.size)
        add("size " + decimalText(*target.size, 3));
    if (target.peakKilobytes)
        add("peak " + decimalText(static_cast<double>(*target.peakKilobytes) / 1024, 1) + " MiB");
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

std::string describe(const std::vector<Check>& checks) {
    std::string text;
    for (const Check& each : checks)
        text += "; " + each.text + (each.isMet ? "" : " (no)");
    return text;
}

// One-minute mean of the processes that want to run.
double load() {
    double value = 0;
    return getloadavg(&value, 1) == 1 ? value : 0;
}

std::string processorName() {
    std::ifstream processors("/proc/cpuinfo");
    for (std::string line; std::getline(processors, line);)
        if (line.starts_with("model name"))
            return line.substr(line.find(':') + 2);
    return "unknown processor";
}

} // namespace

std::string decimalText(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

bool isMet(const ResultRow& row) {
    if (row.ours.milliseconds <= 0 || row.tool.milliseconds <= 0)
        return false;
    const Target& target = row.target;
    return (!target.time || timeRatio(row) <= *target.time) &&
           (!target.size || sizeRatio(row) <= *target.size) &&
           (!target.peakKilobytes || row.ours.peakKilobytes <= *target.peakKilobytes) &&
           std::all_of(
               row.checks.begin(), row.checks.end(), [](const Check& each) { return each.isMet; });
}

void printMachine() {
    std::printf("%ld x %s; load %s at the start\n\n",
                sysconf(_SC_NPROCESSORS_ONLN),
                processorName().c_str(),
                decimalText(load(), 1).c_str());
}

void printEnd(double seconds) {
    std::printf("\n%s s; load %s at the end, of which about 1 to 2 is this comparison\n",
                decimalText(seconds, 0).c_str(),
                decimalText(load(), 1).c_str());
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
                decimalText(timeRatio(row), 3).c_str(),
                sizes > 0 ? decimalText(sizes, 4).c_str() : "",
                (describe(row.target) + describe(row.checks)).c_str(),
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

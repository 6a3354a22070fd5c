// PDF files of JPEG pages against img2pdf, which keeps the pictures' bytes as well.
#include "bench/JoinComparison.h"
#include "bench/Process.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

namespace paperline::bench {

namespace {

constexpr int64_t mostPeakKilobytes = 30 * 1024; // of 1000 pages
constexpr double mostKilobytesPerFurtherPage = 4;
constexpr double mostOverThePages = 0.002;

JoinComparison joining(const std::vector<std::string>& files) {
    JoinComparison result;
    result.work = "PDF, " + std::to_string(files.size()) + " JPEG pages";
    result.workName = "join-pdf";
    result.pageFiles = files;
    result.toolName = "img2pdf";
    result.tool = [](const std::vector<std::string>& from, const std::string& to) {
        std::vector<std::string> words{"img2pdf", "-o", to};
        words.insert(words.end(), from.begin(), from.end());
        return words;
    };
    result.target.time = 1.0 / 3;
    result.target.peakKilobytes = mostPeakKilobytes;
    return result;
}

Check checkSize(const ResultRow& row, const std::vector<std::string>& files) {
    double sum = 0;
    for (const std::string& file : files)
        sum += static_cast<double>(std::filesystem::file_size(file));
    const double over = static_cast<double>(row.ours.bytes) / sum - 1;
    return {decimalText(over * 100, 3) + " % over its pages, at most 0.2 %",
            row.ours.bytes > 0 && over <= mostOverThePages};
}

// The pictures that come out of the file are the page files, byte for byte.
Check checkImages(const std::vector<std::string>& files, const std::string& folder) {
    const std::string out = folder + "/images";
    std::error_code error;
    std::filesystem::create_directory(out, error);
    bool same = runProcess({"pdfimages", "-all", joinedFile(folder), out + "/x"}).succeeded;
    for (size_t page = 0; page < files.size() && same; ++page) {
        char name[32];
        std::snprintf(name, sizeof name, "/x-%03zu.jpg", page);
        const auto image = readFile(out + name);
        same = image && image == readFile(files[page]);
    }
    std::filesystem::remove_all(out, error);
    return {"images byte-identical", same};
}

Check checkGrowth(const std::vector<std::string>& more, const ResultRow& row, size_t pages) {
    const std::string folder = folderOfPath(folderOfPath(more[0]));
    const WorkResult work = runJoin("join-pdf", more, folder);
    const double growth = static_cast<double>(work.peakKilobytes - row.ours.peakKilobytes) /
                          static_cast<double>(more.size() - pages);
    return {decimalText(growth, 2) + " KiB for each further page (" + std::to_string(more.size()) +
                " pages), at most 4",
            work.process.succeeded && growth <= mostKilobytesPerFurtherPage};
}

std::vector<ResultRow> run(const PageSet& pages, const BenchOptions& options) {
    const auto filesOf = [&](int count) {
        return encodedPages(pages, options.pages, count, ".jpg");
    };
    const std::vector<std::string> few = filesOf(5 * std::min(options.pages, 20));
    std::vector<ResultRow> rows{compareJoin(joining(few), pages.folder())};
    rows[0].checks = {checkSize(rows[0], few), checkImages(few, pages.folder())};
    const std::vector<std::string> many = filesOf(50 * std::min(options.pages, 20));
    rows.push_back(compareJoin(joining(many), pages.folder()));
    const std::vector<std::string> more = filesOf(2 * static_cast<int>(many.size()));
    rows[1].checks = {checkSize(rows[1], many), checkGrowth(more, rows[1], many.size())};
    removePath(joinedFile(pages.folder()));
    return rows;
}

} // namespace

std::vector<BenchCase> pdfCases() {
    return {{"pdf", run}};
}

} // namespace paperline::bench

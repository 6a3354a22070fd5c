#include "bench/JoinComparison.h"

#include "output/PageCodecs.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

namespace paperline::bench {

namespace {

int64_t fileBytes(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<int64_t>(size);
}

// The words are the output file and a file with the names of the pages, one a line: names on the
// command line would count as memory of the work.
int join(const PageCodecs::JoinerFactory& factory, const std::vector<std::string>& words) {
    const std::unique_ptr<PageJoiner> joiner = words.size() == 2 ? factory(words[0]) : nullptr;
    if (joiner == nullptr)
        return 1;
    std::ifstream names(words[1]);
    for (std::string name; std::getline(names, name);)
        if (joiner->add(name) != PageJoiner::Added::yes)
            return 1;
    return joiner->finish() ? 0 : 1;
}

PageCodecs::Encoder encoderFor(const std::string& extension) {
    return extension == ".tif" ? pageCodecs().tiff : pageCodecs().jpeg;
}

} // namespace

std::string joinedFile(const std::string& folder) {
    return folder + "/joined";
}

std::vector<std::string>
encodedPages(const PageSet& pages, int different, int count, const std::string& extension) {
    const std::string folder = pages.folder() + "/encoded" + extension;
    std::error_code error;
    std::filesystem::create_directory(folder, error);
    std::vector<std::string> files;
    for (int number = 1; number <= count; ++number) {
        files.push_back(folder + "/" + std::to_string(number) + extension);
        if (fileExists(files.back()))
            continue;
        if (number > different) {
            const auto same = static_cast<size_t>((number - 1) % different);
            std::filesystem::create_hard_link(files[same], files.back(), error);
            continue;
        }
        const BenchPage page = pages.page(PageKind::colour, 300, number);
        const auto bytes = encoderFor(extension)(*page.pixels, {300, 300});
        if (!bytes || !writeFile(files.back(), *bytes)) {
            std::fprintf(stderr, "paperline_bench: %s failed\n", files.back().c_str());
            std::exit(1);
        }
    }
    return files;
}

WorkResult runJoin(const std::string& workName,
                   const std::vector<std::string>& pageFiles,
                   const std::string& folder) {
    const std::string list = folder + "/page-names";
    std::ofstream names(list);
    for (const std::string& file : pageFiles)
        names << file << '\n';
    names.close();
    return runWork({workName, joinedFile(folder), list}, folder);
}

ResultRow compareJoin(const JoinComparison& comparison, const std::string& folder) {
    ResultRow row{comparison.work, {}, comparison.toolName, {}, comparison.target, {}};
    const std::string ourFile = joinedFile(folder);
    const std::string toolFile = folder + "/tool-joined";
    const std::vector<std::string> command = comparison.tool(comparison.pageFiles, toolFile);
    std::vector<double> ourTimes, toolTimes;
    bool succeeded = true;
    for (int round = 0; round < comparison.rounds && succeeded; ++round) {
        removePath(ourFile);
        const WorkResult ours = runJoin(comparison.workName, comparison.pageFiles, folder);
        ourTimes.push_back(ours.process.milliseconds);
        row.ours.peakKilobytes = std::max(row.ours.peakKilobytes, ours.peakKilobytes);
        row.ours.bytes = fileBytes(ourFile);
        const ProcessResult tool =
            runProcess(command, comparison.writesStandardOutput ? toolFile : std::string());
        toolTimes.push_back(tool.milliseconds);
        row.tool.bytes = fileBytes(toolFile);
        removePath(toolFile);
        succeeded = ours.process.succeeded && tool.succeeded;
    }
    if (succeeded) {
        row.ours.milliseconds = median(ourTimes);
        row.tool.milliseconds = median(toolTimes);
    }
    return row;
}

std::vector<BenchWork> joinWorks() {
    return {{"join-tiff",
             [](const std::vector<std::string>& words) {
                 return join(pageCodecs().tiffDeclared300Dpi, words);
             }},
            {"join-pdf",
             [](const std::vector<std::string>& words) { return join(pageCodecs().pdf, words); }}};
}

} // namespace paperline::bench

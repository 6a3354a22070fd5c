// Compares the writers with public tools and prints one table.
#include "bench/Cases.h"
#include "bench/Process.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

namespace {

using namespace paperline::bench;

int usage() {
    std::fprintf(stderr,
                 "usage: paperline_bench [--pages N] [--rounds N] [--small] [--save-pages FOLDER] "
                 "[CASE...]\n"
                 "cases:");
    for (const BenchCase& each : allCases())
        std::fprintf(stderr, " %s", each.name.c_str());
    std::fprintf(stderr, "\n");
    return 2;
}

struct Request {
    BenchOptions options;
    std::vector<std::string> names; // all cases when empty
    std::string pageFolder;         // only save the pages there
    PageSet::Size size = PageSet::Size::asked;
    bool isValid = true;
};

Request parse(std::span<char*> words) {
    Request request;
    for (size_t at = 0; at < words.size(); ++at) {
        const std::string_view word = words[at];
        if (word == "--save-pages") {
            request.pageFolder = at + 1 < words.size() ? words[at + 1] : "";
            request.isValid = request.isValid && !request.pageFolder.empty();
            ++at;
        } else if (word == "--pages" || word == "--rounds") {
            const int number = at + 1 < words.size() ? std::atoi(words[at + 1]) : 0;
            (word == "--pages" ? request.options.pages : request.options.rounds) = number;
            request.isValid = request.isValid && number > 0 && number <= 1000;
            ++at;
        } else if (word == "--small") {
            request.size = PageSet::Size::small;
        } else {
            request.names.emplace_back(word);
        }
    }
    const std::vector<BenchCase> cases = allCases();
    for (const std::string& name : request.names)
        request.isValid = request.isValid &&
                          std::any_of(cases.begin(), cases.end(), [&name](const BenchCase& each) {
                              return each.name == name;
                          });
    return request;
}

int work(std::span<char*> words) {
    const std::vector<std::string> rest(words.begin() + 1, words.end());
    for (const BenchWork& each : allWorks())
        if (each.name == words[0]) {
            const int code = each.run(rest);
            std::printf("%lld\n", static_cast<long long>(ownPeakKilobytes()));
            return code;
        }
    return 2;
}

// For people who want to look at them, and for scripts.
int savePages(const std::string& folder, int count) {
    const PageSet pages(folder);
    for (const PageKind kind : {PageKind::colour, PageKind::grey, PageKind::bilevel})
        for (int number = 1; number <= count; ++number)
            std::printf("%s\n", pages.page(kind, 300, number).pnmFile.c_str());
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    const std::span<char*> words(arguments + 1, static_cast<size_t>(std::max(count - 1, 0)));
    if (words.size() >= 2 && std::string_view(words[0]) == "--work")
        return work(words.subspan(1));
    const Request request = parse(words);
    if (!request.isValid)
        return usage();
    if (!request.pageFolder.empty())
        return savePages(request.pageFolder, request.options.pages);
    const double begin = millisecondsNow();
    const PageSet pages({}, request.size);
    printMachine();
    printTableHead();
    for (const BenchCase& each : allCases()) {
        const bool wanted =
            request.names.empty() ||
            std::find(request.names.begin(), request.names.end(), each.name) != request.names.end();
        if (!wanted)
            continue;
        for (const ResultRow& row : each.run(pages, request.options))
            printRow(row);
    }
    printEnd((millisecondsNow() - begin) / 1000);
    return 0;
}

#include "tests/app/TraceReading.h"

#include "platform/files/FileContent.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <regex>

namespace paperline::test {
namespace {

// Operations that the toolkit calls when it likes: repainting, layout, and reading a list.
constexpr std::array toolkitOperations{"drawRect",
                                       "splitViewDidResizeSubviews",
                                       "shouldHideDividerAtIndex",
                                       "viewDidEndLiveResize",
                                       "numberOfRowsInTableView",
                                       "objectValueForTableColumn",
                                       "willDisplayCell",
                                       "imageRectForBounds",
                                       "titleRectForBounds",
                                       "subtitleRectForBounds",
                                       "drawInteriorWithFrame"};

std::string entryWithoutTime(const std::string& line) {
    static const std::regex form(R"(^\d\d:\d\d:\d\d\.\d\d\d ==> ([^]*)$)");
    std::smatch match;
    EXPECT_TRUE(std::regex_match(line, match, form)) << line;
    return match.size() > 1 ? match[1].str() : line;
}

// Drops each run of entries from the "In " of a toolkit operation to its "Out".
std::vector<std::string> withoutToolkit(const std::vector<std::string>& entries) {
    std::vector<std::string> kept;
    std::string closing;
    for (const std::string& entry : entries) {
        if (!closing.empty()) {
            if (entry == closing)
                closing.clear();
            continue;
        }
        for (const char* operation : toolkitOperations)
            if (entry == "In  1: " + std::string(operation))
                closing = "Out 1: " + std::string(operation);
        if (closing.empty())
            kept.push_back(entry);
    }
    return kept;
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

} // namespace

std::vector<std::string> readTrace(const std::string& path) {
    const std::vector<uint8_t> bytes = readFile(path).value_or(std::vector<uint8_t>{});
    if (bytes.empty())
        return {};
    const auto unitAt = [&bytes](size_t n) {
        return n + 1 < bytes.size() ? bytes[n] + (bytes[n + 1] << 8) : -1;
    };
    constexpr int mark = 0xfeff;
    EXPECT_EQ(unitAt(0), mark) << "the creating write";
    std::vector<std::string> entries;
    for (size_t n = 2; n < bytes.size();) {
        EXPECT_EQ(unitAt(n), mark) << "line " << entries.size() + 1;
        std::string line;
        for (n += 2; n < bytes.size() && unitAt(n) != '\n'; n += 2)
            line += unitAt(n) < 0x80 ? static_cast<char>(unitAt(n)) : '?';
        n += 2;
        entries.push_back(entryWithoutTime(line));
    }
    return entries;
}

std::string goldenText(const std::vector<std::string>& entries,
                       const std::map<std::string, std::string>& names) {
    static const std::regex timeOfDay(R"(\d\d:\d\d:\d\d\.\d\d\d)");
    static const std::regex layout(R"(^ +-?\d+: ((Fitl|Actual)SizeImage\.))");
    std::string text;
    for (std::string entry : withoutToolkit(entries)) {
        for (auto name = names.rbegin(); name != names.rend(); ++name)
            entry = replaceAll(entry, name->first, name->second);
        entry = std::regex_replace(entry, timeOfDay, "HH:MM:SS.mmm");
        text += std::regex_replace(entry, layout, "    N: $1") + "\n";
    }
    return text;
}

void expectGolden(const std::string& name, const std::string& text) {
    const std::string path = PAPERLINE_GOLDEN_FOLDER "/" + name + ".txt";
    if (std::getenv("PAPERLINE_WRITE_GOLDEN") != nullptr) {
        EXPECT_TRUE(writeFile(path, std::vector<uint8_t>(text.begin(), text.end())));
        ADD_FAILURE() << "written: " << path;
        return;
    }
    const std::vector<uint8_t> golden = readFile(path).value_or(std::vector<uint8_t>{});
    EXPECT_EQ(text, std::string(golden.begin(), golden.end())) << path;
}

} // namespace paperline::test

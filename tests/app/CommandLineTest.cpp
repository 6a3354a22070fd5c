#include "app/CommandLine.h"

#include <gtest/gtest.h>

using namespace paperline;

namespace {

CommandLine parse(std::vector<std::string> words) {
    return parseCommandLine(words);
}

} // namespace

TEST(CommandLine, OpensTheWindowWithoutWords) {
    EXPECT_EQ(parse({}).command, Command::window);
}

TEST(CommandLine, TakesEveryScanOption) {
    const CommandLine line = parse({"scan",
                                    "--source",
                                    "Software Scanner",
                                    "--format",
                                    "mpdf",
                                    "--folder=/x/y",
                                    "--name",
                                    "A_%YYYY",
                                    "--option",
                                    "mode=Gray",
                                    "--option=count=2",
                                    "--timeout",
                                    "7",
                                    "--json"});
    ASSERT_EQ(line.command, Command::scan) << line.error;
    EXPECT_EQ(line.scan.source, "Software Scanner");
    EXPECT_EQ(line.scan.fileFormat, 4);
    EXPECT_EQ(line.scan.folder, "/x/y");
    EXPECT_EQ(line.scan.name, "A_%YYYY");
    EXPECT_EQ(line.scan.options, (std::vector<std::string>{"mode=Gray", "count=2"}));
    EXPECT_EQ(line.scan.timeoutSeconds, 7);
    EXPECT_TRUE(line.scan.json);
}

TEST(CommandLine, KnowsTheEightFormatsByName) {
    const std::vector<std::string> names{"bmp", "jpg", "gif", "pdf", "mpdf", "tif", "mtif", "png"};
    for (size_t code = 0; code < names.size(); ++code)
        EXPECT_EQ(parse({"scan", "--format", names[code]}).scan.fileFormat,
                  static_cast<int32_t>(code));
}

TEST(CommandLine, ListsSourcesAndTheirOptions) {
    EXPECT_EQ(parse({"sources"}).command, Command::listSources);
    const CommandLine line = parse({"sources", "--options", "Some Scanner"});
    EXPECT_EQ(line.command, Command::listOptions);
    EXPECT_EQ(line.optionsOf, "Some Scanner");
}

TEST(CommandLine, AnswersHelpAndVersion) {
    EXPECT_EQ(parse({"--help"}).command, Command::help);
    EXPECT_EQ(parse({"scan", "--help"}).command, Command::help);
    EXPECT_EQ(parse({"--version"}).command, Command::version);
}

TEST(CommandLine, RefusesWhatItDoesNotKnow) {
    const std::vector<std::vector<std::string>> wrong{
        {"print"},
        {"scan", "--format"},
        {"scan", "--format", "bmpx"},
        {"scan", "--format", "BMP"},
        {"scan", "--folder", ""},
        {"scan", "--name", "a/b"},
        {"scan", "--name", ""},
        {"scan", "--option", "mode"},
        {"scan", "--option", "=x"},
        {"scan", "--option", "a=b\nc=d"},
        {"scan", "--timeout", "0"},
        {"scan", "--timeout", "5s"},
        {"scan", "--json=yes"},
        {"scan", "page"},
        {"sources", "--options"},
        {"sources", "--all"},
    };
    for (const std::vector<std::string>& words : wrong) {
        const CommandLine line = parse(words);
        EXPECT_EQ(line.command, Command::usageError) << words.back();
        EXPECT_FALSE(line.error.empty()) << words.back();
    }
}

TEST(CommandLine, RefusesWhatIsNotUtf8) {
    const std::string latin = "gr\xfc\xdf";
    EXPECT_EQ(parse({"scan", "--folder", latin}).error, "--folder is not valid UTF-8");
    EXPECT_EQ(parse({"scan", "--name=" + latin}).error, "--name is not valid UTF-8");
    EXPECT_EQ(parse({"scan", "--json", "--source", latin}).error, "--source is not valid UTF-8");
    EXPECT_EQ(parse({"scan", "--option", "mode=" + latin}).error, "--option is not valid UTF-8");
    EXPECT_EQ(parse({"sources", "--options", latin}).error, "--options is not valid UTF-8");
    EXPECT_EQ(parse({latin}).error, "a word is not valid UTF-8");
    EXPECT_EQ(parse({"scan", "--folder", latin}).command, Command::usageError);
    EXPECT_EQ(parse({"scan", "--folder", "gr\u00fc\u00df"}).command, Command::scan);
}

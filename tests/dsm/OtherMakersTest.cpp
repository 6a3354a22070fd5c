// Another maker's program, a process of its own, with our manager and with another maker's.
#include "TestPlaces.h"

#include <gmock/gmock.h>

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <tuple>

namespace paperline::test {
namespace {

using testing::HasSubstr;

struct Ended {
    int exitCode;
    std::string output; // both streams
};

Ended runCommand(const std::string& command) {
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::string output;
    for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe))
        output += static_cast<char>(byte);
    const int status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

Ended run(const std::string& arguments) {
    return runCommand(std::string(OTHERMAKER_HOST) + " " + arguments);
}

const std::string bothPages = "page 1: 20 x 10, 8 bits, 300 x 150.5 dpi, 3 strips, sum 24590764\n"
                              "page 2: 20 x 10, 8 bits, 300 x 150.5 dpi, 3 strips, sum 60dd2964\n";

class OtherMakersProgram : public testing::TestWithParam<std::tuple<const char*, const char*>> {};

TEST_P(OtherMakersProgram, ScansWithOurManager) {
    const TestPlaces places;
    places.addPlain("1alpha.ds", OTHERMAKER_ALPHA);
    places.addBundle(places.systemBundles(), "beta", OTHERMAKER_BETA);
    const auto [product, options] = GetParam();
    const Ended ended = run(places.managerFile().string() + " scan " + product + " " + options);
    EXPECT_EQ(ended.output, bothPages);
    EXPECT_EQ(ended.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(EverySourceAndCallback,
                         OtherMakersProgram,
                         testing::Combine(testing::Values("Alpha", "Beta"),
                                          testing::Values("",
                                                          "--callback2",
                                                          "--before-open",
                                                          "--before-open --callback2",
                                                          "--events")));

TEST(OtherMakersManager, HostsTheSameSources) {
    const TestPlaces places;
    places.addPlain("1alpha.ds", OTHERMAKER_ALPHA);
    places.addPlain("2beta.ds", OTHERMAKER_BETA);
    ::setenv("OTHERMAKER_DSM_SOURCES", places.plainSources().c_str(), 1);
    const std::string manager = OTHERMAKER_MANAGER;
    EXPECT_EQ(run(manager + " scan Alpha").output, bothPages);
    EXPECT_EQ(run(manager + " scan Beta --callback2").output, bothPages);
    const Ended refused = run(manager + " scan Beta --before-open");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.output, HasSubstr("MSG_REGISTER_CALLBACK: return code 1, condition 12"));
}

TEST(OtherMakersProgramAlone, ReportsWhatGoesWrong) {
    const TestPlaces places;
    places.addPlain("closed.ds", OTHERMAKER_CLOSED);
    const std::string manager = places.managerFile();
    EXPECT_EQ(run(manager + " list").output, "Othermaker|Test sources|Closed\n");
    EXPECT_EQ(run(manager + " scan Closed").output, "MSG_OPENDS: return code 1, condition 4\n");
    EXPECT_EQ(run(manager + " scan Nobody").exitCode, 1);
    EXPECT_EQ(run(manager).exitCode, 2);
}

TEST(OurManager, ExportsTheStandardInterfaceAlone) {
    const Ended names = runCommand("nm -D --defined-only --format=just-symbols " TEST_MANAGER_FILE);
    EXPECT_EQ(names.output,
              "DSM_Entry\nDSM_MemAllocate\nDSM_MemFree\nDSM_MemLock\nDSM_MemUnlock\n");
}

TEST(OurManager, BringsNoLibraryButTheLanguagesOwn) {
    const Ended section = runCommand("readelf -d " TEST_MANAGER_FILE);
    EXPECT_THAT(section.output, HasSubstr("(NEEDED)"));
    EXPECT_THAT(section.output, testing::Not(HasSubstr("Qt")));
    EXPECT_THAT(section.output, testing::Not(HasSubstr("plist")));
}

TEST(OurManager, LogsToStandardErrorUnlessAFileIsNamed) {
    const TestPlaces places;
    places.addPlain("noentry.ds", OTHERMAKER_NOENTRY);
    ::unsetenv("PAPERLINE_DSM_LOG");
    EXPECT_THAT(run(places.managerFile().string() + " list").output,
                HasSubstr("noentry.ds: not loaded: has no DS_Entry\n"));
    ::setenv("PAPERLINE_DSM_LOG", (places.folder() / "log").c_str(), 1);
    EXPECT_EQ(run(places.managerFile().string() + " list").output, "");
    EXPECT_THAT(places.log(), HasSubstr("noentry.ds: not loaded: has no DS_Entry\n"));
}

} // namespace
} // namespace paperline::test

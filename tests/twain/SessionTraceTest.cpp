// The lines that the session writes into the debug trace.
#include "SessionFixture.h"

#include "base/BrandProfile.h"
#include "platform/host/Host.h"
#include "tests/support/TraceRecording.h"

#include <gmock/gmock.h>

#include <tuple>

namespace paperline::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Not;

class SessionTraceTest : public SessionFixture {
protected:
    std::vector<std::string> takeTrace() {
        const std::vector<std::string> entries = trace_.entries();
        trace_.clear();
        return entries;
    }

private:
    testing_support::TraceRecording trace_;
};

TEST_F(SessionTraceTest, TellsOfTheConnection) {
    gBrandNumber = 2;
    addSource("Talmerick", "Scanner");
    controller->TwainInit();
    controller->selectSpcificSource();
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: TwainInit",
                            "    1: gTWAINHandler COMPANYNAME_TALMERICK",
                            "Out 1: TwainInit",
                            "In  1: selectSpcificSource",
                            "    0: selectSpcificSource - MSG_GETFIRST",
                            "Out 1: selectSpcificSource"));
    controller->CheckIdentity(0);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: CheckIdentity",
                            "    1: ProductName select : Scanner",
                            "    1: Manufacturer select : Talmerick",
                            "    1: Manufacturer org  Talmerick",
                            "    1: Manufacturer dest Talmerick",
                            "Out 1: CheckIdentity"));
}

TEST_F(SessionTraceTest, NamesOnlyOneBrandsHandler) {
    controller->TwainInit();
    EXPECT_THAT(takeTrace(), ElementsAre("In  1: TwainInit", "Out 1: TwainInit"));
}

TEST_F(SessionTraceTest, TellsOfTheFolderAtTheStartOfAScan) {
    addSource();
    connect();
    takeTrace();
    controller->profileFolderName = folder + "/New/";
    controller->toolBarItemScan(nullptr);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: toolBarItemScan",
                            "    1: Success!",
                            "    1: current profileFolderName fileExistsAtPath?",
                            "    1: current profileFolderName fileExistsAtPath End",
                            "In  1: enableToolbatItems",
                            "Out 1: enableToolbatItems",
                            "In  1: nonUI",
                            "Out 1: nonUI",
                            "Out 1: toolBarItemScan"));
    folderField.setFolderText(folder + "/Other/Image");
    controller->closeRequest(nullptr);
    takeTrace();
    controller->toolBarItemScan(nullptr);
    EXPECT_THAT(takeTrace(),
                IsSupersetOf({"    1: current profileFolderName not Exists",
                              "    1: createDirectoryAtPath tmpFolderName"}));
}

TEST_F(SessionTraceTest, MakesNoFolderThatIsThere) {
    addSource();
    connect();
    takeTrace();
    folderField.setFolderText(folder + "/");
    controller->toolBarItemScan(nullptr);
    const std::vector<std::string> lines = takeTrace();
    EXPECT_THAT(lines, Contains("    1: current profileFolderName fileExistsAtPath End"));
    EXPECT_THAT(lines, Not(Contains("    1: Success!")));
    EXPECT_THAT(lines, Not(Contains("    1: current profileFolderName not Exists")));
}

TEST_F(SessionTraceTest, TellsThatAFolderCannotBeMade) {
    addSource();
    connect();
    writeTextFile(folder + "/file", "in the way");
    folderField.setFolderText(folder + "/file/Deep/");
    takeTrace();
    controller->toolBarItemScan(nullptr);
    EXPECT_THAT(takeTrace(), Contains(::testing::StartsWith("    1: Error! ")));
}

TEST_F(SessionTraceTest, CountsPendingPages) {
    addSource().pages.assign(3, goodPage(pageInfo(4, 4, 8, 300)));
    connect();
    takeTrace();
    scanAtOnce();
    std::vector<std::string> counts;
    for (const std::string& line : takeTrace()) {
        if (line.find("pendingXfers.count") != std::string::npos)
            counts.push_back(line);
    }
    EXPECT_THAT(counts,
                ElementsAre("    2: pendingXfers.count",
                            "    1: pendingXfers.count",
                            "    0: pendingXfers.count"));
}

TEST_F(SessionTraceTest, SaysWhyAPageWasNotSaved) {
    addSource().pages.assign(1, goodPage(pageInfo(4, 4, 8, 300)));
    connect();
    takeTrace();
    controller->createFolerprofileFolderName = folder + "/nowhere";
    scanAtOnce();
    EXPECT_THAT(takeTrace(), Contains("    1: saveXferDatatoMedia Failed(NoImageSave)!!"));
    host().freeSpaceBytes = [](const std::string&) { return std::optional<int64_t>(0); };
    scanAtOnce();
    EXPECT_THAT(takeTrace(), Contains("    1: saveXferDatatoMedia Failed(NoEnoughDiskSpace)!!"));
}

TEST_F(SessionTraceTest, TellsOfThePagesWriter) {
    addSource().pages.assign(1, goodPage(pageInfo(4, 4, 8, 300)));
    connect();
    controller->profileFileformatSelect = 0;
    takeTrace();
    scanAtOnce();
    EXPECT_THAT(
        takeTrace(),
        IsSupersetOf<std::string>({"In  1: saveXferDatatoMedia",
                                   "FILEFORMAT_BMP In 1: saveXferDatatoMedia", // without a blank
                                   "    1: saveXferDatatoMedia : " + savedPath(1),
                                   "In  1: saveAsBMPWithName",
                                   "In  1: checkFreeDiskSpace",
                                   "writebmp in 1: saveAsBMPWithName",
                                   "writebmp out 1: saveAsBMPWithName",
                                   "FILEFORMAT_BMP Out 1: saveXferDatatoMedia",
                                   "add to ImageFilePath 1: saveXferDatatoMedia"}));
    controller->profileFileformatSelect = 1;
    scanAtOnce();
    EXPECT_THAT(
        takeTrace(),
        IsSupersetOf<std::string>({"FILEFORMAT_JPG In  1: saveXferDatatoMedia", // with a blank
                                   "    1: saveXferDatatoMedia : " + savedPath(2, "jpg"),
                                   "FILEFORMAT_JPG Out 1: saveXferDatatoMedia"}));
    controller->mMenuFileSave = 0;
    scanAtOnce();
    EXPECT_THAT(takeTrace(), Contains("mMenuFileSave = 0 1: saveXferDatatoMedia"));
}

TEST_F(SessionTraceTest, ShowsAPreviewInTheModeInForce) {
    addSource().pages.assign(1, goodPage(pageInfo(40, 40, 8, 300)));
    connect();
    controller->mMenuFileSave = 0;
    for (const auto& [mode, operation, other] :
         {std::tuple{1, "In  1: showFitlSizeImage", "In  1: showActualSizeImage"},
          std::tuple{2, "In  1: showActualSizeImage", "In  1: showFitlSizeImage"}}) {
        controller->_fitOrAcutalImage = mode;
        takeTrace();
        scanAtOnce();
        const std::vector<std::string> lines = takeTrace();
        EXPECT_THAT(lines, Contains(operation)) << mode;
        EXPECT_THAT(lines, Not(Contains(other))) << mode;
    }
}

TEST_F(SessionTraceTest, EndsWithoutTheWritersOutWhenThePageIsNotSaved) {
    addSource().pages.assign(1, goodPage(pageInfo(4, 4, 8, 300)));
    connect();
    host().freeSpaceBytes = [](const std::string&) { return std::optional<int64_t>(0); };
    takeTrace();
    scanAtOnce();
    const std::vector<std::string> lines = takeTrace();
    EXPECT_THAT(lines, Contains("FILEFORMAT_BMP In 1: saveXferDatatoMedia"));
    EXPECT_THAT(lines, Not(Contains("FILEFORMAT_BMP Out 1: saveXferDatatoMedia")));
    EXPECT_THAT(lines, Not(Contains("add to ImageFilePath 1: saveXferDatatoMedia")));
    EXPECT_THAT(lines, Contains("Out 1: saveXferDatatoMedia"));
}

TEST_F(SessionTraceTest, SaysThatMemoryCannotBeRead) {
    host().availableMemoryBytes = [] { return std::optional<uint64_t>(); };
    controller->get_free_memory();
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: get_free_memory",
                            "    1: Failed to fetch vm statistics",
                            "Out 1: get_free_memory"));
}

TEST_F(SessionTraceTest, TellsOfTheSourcesLanguage) {
    const std::string bundle = folder + "/Scanner.ds";
    const std::string file = bundle + "/Versions/A/cvscan.plist";
    writeTextFile(file,
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                  "<key>Default</key><dict><key>Language</key><integer>6</integer></dict>"
                  "</dict></plist>");
    controller->dsDatas = {{"Scanner.ds", bundle, "Corvane", "Scanner"}};
    controller->ReadWriteDSLanguageSetting(1, true);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: ReadWriteDSLanguageSetting",
                            "    1: DS Path : " + file,
                            "    6: DS Language set",
                            "    6: orgLanaguage",
                            "Out 1: ReadWriteDSLanguageSetting"));
    controller->ReadWriteDSLanguageSetting(1, false);
    EXPECT_THAT(takeTrace(), Contains("    6: profileLanguage"));
}

} // namespace
} // namespace paperline::test

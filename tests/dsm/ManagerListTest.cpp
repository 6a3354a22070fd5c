// Which sources the manager lists, under which numbers, and which one is the default.
#include "OtherApplication.h"
#include "TestPlaces.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <set>

namespace paperline::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ManagerList : public testing::Test {
protected:
    void TearDown() override { takeMessages(); }

    TestPlaces places;
    const std::string manager = places.managerFile();
    const std::string fallback = "<key>PaperlineFallback</key><true/>";
};

TEST_F(ManagerList, OpensOncePerApplicationAndHandsOutNumbers) {
    OtherApplication one(manager, "One");
    OtherApplication two(manager, "Two");
    ASSERT_EQ(one.openManager(), TWRC_SUCCESS);
    ASSERT_EQ(two.openManager(), TWRC_SUCCESS);
    EXPECT_NE(+one.identity.Id, 0U);
    EXPECT_NE(+one.identity.Id, +two.identity.Id);
    EXPECT_EQ(+one.identity.SupportedGroups, DG_CONTROL | DG_IMAGE | DF_APP2 | DF_DSM2);
    EXPECT_EQ(one.openManager(), TWRC_FAILURE);
    EXPECT_EQ(one.condition(), TWCC_SEQERROR);
    EXPECT_EQ(one.condition(), TWCC_SUCCESS); // asking clears it
    EXPECT_EQ(one.closeManager(), TWRC_SUCCESS);
    EXPECT_EQ(one.closeManager(), TWRC_FAILURE);
    EXPECT_EQ(one.condition(), TWCC_SEQERROR);
    EXPECT_EQ(two.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerList, TakesAnApplicationThatBringsANumberOfItsOwn) {
    OtherApplication one(manager, "One");
    OtherApplication two(manager, "Two");
    one.identity.Id = 1;
    two.identity.Id = 1;
    EXPECT_EQ(one.openManager(), TWRC_SUCCESS);
    two.identity.Id = one.identity.Id;
    EXPECT_EQ(two.openManager(), TWRC_SUCCESS);
    EXPECT_NE(+one.identity.Id, +two.identity.Id);
    EXPECT_EQ(one.closeManager(), TWRC_SUCCESS);
    EXPECT_EQ(two.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerList, SaysThatThereIsNoSource) {
    OtherApplication application(manager, "One");
    ASSERT_EQ(application.openManager(), TWRC_SUCCESS);
    TW_IDENTITY identity{};
    for (const TW_UINT16 message :
         {MSG_GETFIRST, MSG_GETNEXT, MSG_GETDEFAULT, MSG_OPENDS, MSG_SET}) {
        EXPECT_EQ(application.control(DAT_IDENTITY, message, &identity), TWRC_FAILURE) << message;
        EXPECT_EQ(application.condition(), TWCC_NODS) << message;
    }
    EXPECT_EQ(application.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerList, HasBundlesOfEveryFolderAndPlainFiles) {
    places.addBundle(places.systemBundles(), "beta", OTHERMAKER_BETA);
    places.addBundle(places.folder() / "tree/TWAIN Data Sources", "alpha", OTHERMAKER_ALPHA);
    places.addPlain("maker/closed.ds", OTHERMAKER_CLOSED);
    OtherApplication application(manager, "One");
    ASSERT_EQ(application.openManager(), TWRC_SUCCESS);
    EXPECT_THAT(application.sourceNames(), ElementsAre("Beta", "Alpha", "Closed"));
    std::set<TW_UINT32> ids{application.identity.Id};
    for (const TW_IDENTITY& source : application.sources())
        EXPECT_TRUE(source.Id != 0 && ids.insert(+source.Id).second);
    TW_IDENTITY more{};
    EXPECT_EQ(application.control(DAT_IDENTITY, MSG_GETNEXT, &more), TWRC_ENDOFLIST);
    EXPECT_EQ(application.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerList, KeepsAPlaceInTheListForEachApplication) {
    places.addPlain("1.ds", OTHERMAKER_ALPHA);
    places.addPlain("2.ds", OTHERMAKER_BETA);
    OtherApplication one(manager, "One");
    OtherApplication two(manager, "Two");
    one.openManager();
    two.openManager();
    TW_IDENTITY ofOne{}, ofTwo{};
    one.control(DAT_IDENTITY, MSG_GETFIRST, &ofOne);
    two.control(DAT_IDENTITY, MSG_GETFIRST, &ofTwo);
    one.control(DAT_IDENTITY, MSG_GETNEXT, &ofOne);
    EXPECT_STREQ(ofOne.ProductName, "Beta");
    two.control(DAT_IDENTITY, MSG_GETNEXT, &ofTwo);
    EXPECT_STREQ(ofTwo.ProductName, "Beta");
    one.closeManager();
    two.closeManager();
}

TEST_F(ManagerList, LeavesOutWhatIsNoSourceAndLogsWhy) {
    places.addPlain("1alpha.ds", OTHERMAKER_ALPHA);
    places.addPlain("2noentry.ds", OTHERMAKER_NOENTRY);
    places.addPlain("3refusing.ds", OTHERMAKER_REFUSING);
    writeText(places.plainSources() / "4text.ds", "I am no shared object.\n");
    writeText(places.plainSources() / "5empty.ds", "");
    const std::string whole = readText(OTHERMAKER_BETA);
    writeText(places.plainSources() / "6half.ds", whole.substr(0, 100));
    OtherApplication application(manager, "One");
    ASSERT_EQ(application.openManager(), TWRC_SUCCESS);
    EXPECT_THAT(application.sourceNames(), ElementsAre("Alpha"));
    for (const char* line : {"2noentry.ds: not loaded: has no DS_Entry",
                             "3refusing.ds: does not tell its identity: return code 1",
                             "4text.ds: not loaded: ",
                             "5empty.ds: not loaded: ",
                             "6half.ds: not loaded: "})
        EXPECT_THAT(places.log(), HasSubstr(line));
    EXPECT_THAT(places.log(), testing::Not(HasSubstr("1alpha")));
    EXPECT_EQ(application.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerList, EndsNamesThatTheSourceDidNotEnd) {
    places.addPlain("endless.ds", OTHERMAKER_ENDLESS);
    OtherApplication application(manager, "One");
    ASSERT_EQ(application.openManager(), TWRC_SUCCESS);
    TW_IDENTITY source{};
    ASSERT_EQ(application.control(DAT_IDENTITY, MSG_GETFIRST, &source), TWRC_SUCCESS);
    EXPECT_EQ(source.ProductName, std::string(33, 'P'));
    EXPECT_EQ(source.ProductFamily, std::string(33, 'F'));
    EXPECT_EQ(source.Manufacturer, std::string(33, 'M'));
    EXPECT_EQ(source.Version.Info, std::string(33, 'V'));
    EXPECT_EQ(application.open(source), TWRC_SUCCESS);
    EXPECT_EQ(application.close(source), TWRC_SUCCESS);
    EXPECT_EQ(application.closeManager(), TWRC_SUCCESS);
}

TEST_F(ManagerList, ShowsFallbacksOnlyWhereNothingElseIs) {
    places.addBundle(places.systemBundles(), "alpha", OTHERMAKER_ALPHA, fallback);
    places.addPlain("noentry.ds", OTHERMAKER_NOENTRY); // a file, but no source
    OtherApplication application(manager, "One");
    application.openManager();
    EXPECT_THAT(application.sourceNames(), ElementsAre("Alpha"));
    application.closeManager();

    places.addPlain("beta.ds", OTHERMAKER_BETA);
    application.openManager();
    EXPECT_THAT(application.sourceNames(), ElementsAre("Beta"));
    application.closeManager();

    ::setenv("PAPERLINE_SOFTWARE_SCANNER", "1", 1);
    application.openManager();
    EXPECT_THAT(application.sourceNames(), ElementsAre("Alpha", "Beta"));
    application.closeManager();

    ::setenv("PAPERLINE_SOFTWARE_SCANNER", "", 1);
    application.openManager();
    EXPECT_THAT(application.sourceNames(), ElementsAre("Beta"));
    application.closeManager();
}

TEST_F(ManagerList, LooksForSourcesWhenTheFirstApplicationOpensIt) {
    places.addPlain("1.ds", OTHERMAKER_ALPHA);
    OtherApplication one(manager, "One");
    OtherApplication two(manager, "Two");
    one.openManager();
    places.addPlain("2.ds", OTHERMAKER_BETA);
    two.openManager();
    EXPECT_EQ(two.sourceNames(), one.sourceNames());
    one.closeManager();
    two.closeManager();
    one.openManager();
    EXPECT_THAT(one.sourceNames(), ElementsAre("Alpha", "Beta"));
    one.closeManager();
}

TEST_F(ManagerList, RemembersTheDefaultSource) {
    places.addPlain("1.ds", OTHERMAKER_ALPHA);
    places.addPlain("2.ds", OTHERMAKER_BETA);
    OtherApplication application(manager, "One");
    application.openManager();
    TW_IDENTITY standard{};
    ASSERT_EQ(application.control(DAT_IDENTITY, MSG_GETDEFAULT, &standard), TWRC_SUCCESS);
    EXPECT_STREQ(standard.ProductName, "Alpha"); // the first, while none was chosen
    TW_IDENTITY beta = application.named("Beta");
    EXPECT_EQ(application.control(DAT_IDENTITY, MSG_SET, &beta), TWRC_SUCCESS);
    application.closeManager();
    EXPECT_EQ(readText(places.folder() / "data/paperline/default-source"),
              "Othermaker\nTest sources\nBeta\n");

    application.openManager();
    ASSERT_EQ(application.control(DAT_IDENTITY, MSG_GETDEFAULT, &standard), TWRC_SUCCESS);
    EXPECT_STREQ(standard.ProductName, "Beta");
    TW_IDENTITY unknown = beta;
    unknown.Id = 999;
    std::strcpy(unknown.ProductName, "Gone");
    EXPECT_EQ(application.control(DAT_IDENTITY, MSG_SET, &unknown), TWRC_FAILURE);
    EXPECT_EQ(application.condition(), TWCC_BADVALUE);
    application.closeManager();
}

// Two scanners of one model bear the same names; only the number tells them apart.
TEST_F(ManagerList, KeepsTwinsApart) {
    places.addPlain("1.ds", OTHERMAKER_ALPHA);
    places.addPlain("2.ds", OTHERMAKER_ALPHA);
    OtherApplication application(manager, "One");
    application.openManager();
    std::vector<TW_IDENTITY> twins = application.sources();
    ASSERT_EQ(twins.size(), 2U);
    for (TW_IDENTITY& twin : twins) {
        const TW_UINT32 number = twin.Id;
        EXPECT_EQ(application.open(twin), TWRC_SUCCESS);
        EXPECT_EQ(+twin.Id, number);
    }
    for (TW_IDENTITY& twin : twins)
        EXPECT_EQ(application.close(twin), TWRC_SUCCESS);
    application.closeManager();
}

TEST_F(ManagerList, HasNoDialogOfItsOwn) {
    places.addPlain("1.ds", OTHERMAKER_ALPHA);
    OtherApplication application(manager, "One");
    application.openManager();
    TW_IDENTITY chosen{};
    EXPECT_EQ(application.control(DAT_IDENTITY, MSG_USERSELECT, &chosen), TWRC_FAILURE);
    EXPECT_EQ(application.condition(), TWCC_BADPROTOCOL);
    EXPECT_EQ(chosen.ProductName[0], '\0');
    application.closeManager();
}

} // namespace
} // namespace paperline::test

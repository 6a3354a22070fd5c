#include "SessionFixture.h"

#include "base/BrandProfile.h"
#include "platform/files/Files.h"
#include "platform/places/Places.h"
#include "tests/support/Brands.h"
#include "twain/TWAINHandler.h"

#include <QDialog>
#include <QTimer>

#include <gmock/gmock.h>

#include <array>

namespace paperline::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SourceSelectionTest : public SessionFixture {
protected:
    std::vector<std::string> keptProducts() const {
        std::vector<std::string> names;
        for (const TWAIN_INFO& source : controller->dsArray)
            names.push_back(source.productNameText());
        return names;
    }
    void addSourceOf(std::string_view maker, std::string_view product, std::string_view family) {
        dsm.sources.push_back({.identity = sourceIdentity(maker, product, family)});
    }
    std::string bundleFolder() const { return dataSourceFolders().front(); }
    void addBundle(const std::string& name, const std::string& product, const std::string& maker) {
        writeTextFile(bundleFolder() + "/" + name + "/Versions/A/Resources/Info.plist",
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                      "<key>ProductName</key><string>" +
                          product + "</string><key>Manufacturer</key><string>" + maker +
                          "</string></dict></plist>");
    }
    ~SourceSelectionTest() override { removePath(bundleFolder()); }
};

// --- connection ---

TEST_F(SourceSelectionTest, IntroducesEveryBrandByItsStrings) {
    struct Expected {
        uint32_t brand;
        const char* manufacturer;
        const char* productName;
    };
    const std::array<Expected, 9> table{
        {{0, "Company", "Paperline"},
         {1, "Corvane", "Corvane Paperline"},
         {2, "Corvane", "Talmerick Sheetdesk"},
         {3, "Corvane", "Corvane Paperline"},
         {4, "Lumo", "Lumo Paperline"},
         {5, "Hatsell", "Vellum Desk"},
         {6, "Hatsell", "VellumRoam"},
         {7, "Hatsell", "Roaming Leaf GATHER"},
         {testing_support::unlistedBrand, "Corvane", "Corvane Paperline"}}};
    for (const Expected& expected : table) {
        endTwainSession();
        gBrandNumber = expected.brand;
        controller->TwainInit();
        const TW_IDENTITY identity = dsm.last(openDsm)->origin;
        EXPECT_EQ(identity.Manufacturer.text(), expected.manufacturer) << expected.brand;
        EXPECT_EQ(identity.ProductFamily.text(), "PageCentral") << expected.brand;
        EXPECT_EQ(identity.ProductName.text(), expected.productName) << expected.brand;
        EXPECT_EQ(identity.Version.Info.text(), "1.00") << expected.brand;
        EXPECT_EQ(identity.Id, 1U) << expected.brand;
    }
}

TEST_F(SourceSelectionTest, RegistersTheCallbackBeforeAnySourceIsOpen) {
    controller->TwainInit();
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/PARENT/OPENDSM", "CONTROL/CALLBACK/REGISTER_CALLBACK"));
    const auto record = dsm.last(registerCallback)->sentAs<TW_CALLBACK>();
    EXPECT_EQ(record.RefCon, reinterpret_cast<uintptr_t>(controller.get()) & uintptr_t{0xffffffff});
}

TEST_F(SourceSelectionTest, KeepsTheHandlerWhenConnectedAgain) {
    controller->TwainInit();
    const TWAINHandler* handler = gTWAINHandler;
    controller->TwainInit();
    EXPECT_EQ(gTWAINHandler, handler);
    EXPECT_EQ(dsm.count(openDsm), 1U);
    EXPECT_EQ(dsm.count(registerCallback), 2U);
}

TEST_F(SourceSelectionTest, EndsTheSessionOnce) {
    addSource();
    connect();
    endTwainSession();
    EXPECT_EQ(gTWAINHandler, nullptr);
    endTwainSession();
    EXPECT_THAT(dsm.names(), ElementsAre("CONTROL/PARENT/CLOSEDSM"));
}

// --- messages ---

TEST_F(SourceSelectionTest, SchedulesAndNeverWorksInsideTheCallback) {
    addSource();
    connect();
    // The loop runs what is due in the order in which it fell due, however late that is.
    int endedBefore = -1;
    QTimer::singleShot(95, Qt::PreciseTimer, [&] { endedBefore = scansEnded; });
    for (uint16_t message : {twain::MSG_XFERREADY, twain::MSG_CLOSEDSREQ, twain::MSG_CLOSEDSOK})
        EXPECT_EQ(dsm.send(message), twain::TWRC_SUCCESS);
    EXPECT_THAT(dsm.calls(), IsEmpty());
    EXPECT_EQ(scansEnded, 0);
    runFor(105);
    EXPECT_EQ(endedBefore, 0) << "a tenth of a second has not passed yet";
    EXPECT_EQ(scansEnded, 2);
    EXPECT_EQ(dsm.count(closeDs), 2U);
}

TEST_F(SourceSelectionTest, IgnoresEveryOtherMessage) {
    addSource();
    connect();
    for (uint16_t message : {twain::MSG_DEVICEEVENT, twain::MSG_NULL, uint16_t{0xffff}})
        EXPECT_EQ(dsm.send(message), twain::TWRC_SUCCESS);
    runFor(200);
    EXPECT_THAT(dsm.calls(), IsEmpty());
}

TEST_F(SourceSelectionTest, DropsMessagesForAControllerThatIsGone) {
    addSource();
    connect();
    dsm.send(twain::MSG_CLOSEDSREQ);
    controller.reset();
    runFor(200);
    EXPECT_THAT(dsm.calls(), IsEmpty());
}

// --- the manager's list ---

TEST_F(SourceSelectionTest, AsksForTheFirstSourceTwiceAndThenForTheRest) {
    addSource("Corvane", "One");
    addSource("Corvane", "Two");
    controller->TwainInit();
    dsm.forgetCalls();
    EXPECT_EQ(controller->selectSpcificSource(), 0);
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/GETFIRST",
                            "CONTROL/IDENTITY/GETFIRST",
                            "CONTROL/IDENTITY/GETNEXT",
                            "CONTROL/IDENTITY/GETNEXT"));
    EXPECT_THAT(keptProducts(), ElementsAre("One", "Two"));
}

TEST_F(SourceSelectionTest, KeepsTheBrandsAndTheMakersSources) {
    addSourceOf("Hastell Imaging", "A", "X");
    addSourceOf("Stranger", "B", "PageCentral");
    addSourceOf("The Corvane Company", "C", "X");
    addSourceOf("Nimro", "D", "X");
    addSourceOf("Talmerick", "E", "X");
    addSourceOf("Lumo", "F", "X");
    const std::array<std::vector<std::string>, 9> kept{{{"B"},
                                                        {"C"},
                                                        {"C", "D", "E"},
                                                        {"C", "D"},
                                                        {"C", "F"},
                                                        {"A", "C"},
                                                        {"A", "C"},
                                                        {"A", "C"},
                                                        {"C"}}};
    for (size_t i = 0; i < kept.size(); ++i) {
        endTwainSession();
        gBrandNumber = testing_support::everyBrand.at(i);
        controller->TwainInit();
        controller->selectSpcificSource();
        EXPECT_EQ(keptProducts(), kept[i]) << gBrandNumber;
    }
}

TEST_F(SourceSelectionTest, BuildsTheListAfresh) {
    addSource("Corvane", "One");
    controller->TwainInit();
    controller->selectSpcificSource();
    controller->selectSpcificSource();
    EXPECT_THAT(keptProducts(), ElementsAre("One"));
    dsm.sources.clear();
    EXPECT_EQ(controller->selectSpcificSource(), 0);
    EXPECT_THAT(keptProducts(), IsEmpty());
}

TEST_F(SourceSelectionTest, EndsWithAManagerWhoseListNeverEnds) {
    addSource("Corvane", "One");
    dsm.intercept = [](const Triplet& triplet, TW_MEMREF data) -> std::optional<uint16_t> {
        if (triplet.type != twain::DAT_IDENTITY || triplet.message == twain::MSG_OPENDS ||
            triplet.message == twain::MSG_CLOSEDS)
            return std::nullopt;
        *static_cast<TW_IDENTITY*>(data) = sourceIdentity("Corvane", "Again");
        return twain::TWRC_SUCCESS;
    };
    controller->TwainInit();
    EXPECT_EQ(controller->selectSpcificSource(), 0);
    EXPECT_EQ(controller->dsArray.size(), 10'000U);
    controller->dsArray.resize(1);
    controller->dsArray[0] = TWAIN_INFO::from(sourceIdentity("Corvane", "Not there"));
    EXPECT_EQ(controller->CheckIdentity(0), twain::TWRC_FAILURE);
}

// --- bundles on disk ---

TEST_F(SourceSelectionTest, ListsBundlesWithAnInfoFile) {
    addBundle("Alpha.ds", "Alpha 3000", "Corvane");
    addBundle("Beta.DS", "Beta", "Lumo");
    addBundle("Gamma.bundle", "Gamma", "Corvane");
    EXPECT_TRUE(createFolderWithParents(bundleFolder() + "/Empty.ds/Versions"));
    controller->dsDatas.push_back({"stale", "", "", ""});
    controller->SearchAllDS();
    std::vector<DsData> found = controller->dsDatas;
    std::sort(found.begin(), found.end(), [](const DsData& one, const DsData& other) {
        return one.dsName < other.dsName;
    });
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].dsName, "Alpha.ds");
    EXPECT_EQ(found[0].dsPath, bundleFolder() + "/Alpha.ds");
    EXPECT_EQ(found[0].ProductName, "Alpha 3000");
    EXPECT_EQ(found[0].Manufacturer, "Corvane");
    EXPECT_EQ(found[1].ProductName, "Beta");
}

TEST_F(SourceSelectionTest, ListsNothingWithoutAFolder) {
    controller->dsDatas.push_back({"stale", "", "", ""});
    controller->SearchAllDS();
    EXPECT_THAT(controller->dsDatas, IsEmpty());
}

TEST_F(SourceSelectionTest, ListsABundleWhoseInfoFileSaysNothing) {
    writeTextFile(bundleFolder() + "/Bad.ds/Versions/A/Resources/Info.plist", "no property list");
    controller->SearchAllDS();
    ASSERT_EQ(controller->dsDatas.size(), 1U);
    EXPECT_EQ(controller->dsDatas[0].ProductName, "");
}

TEST_F(SourceSelectionTest, FindsTheBundleOfTheSelectedSource) {
    addSource("Corvane", "Scanner");
    connect();
    controller->dsDatas = {{"a.ds", "/a.ds", "Corvane", "Other"},
                           {"b.ds", "/b.ds", "Corvane", "Scanner"},
                           {"c.ds", "/c.ds", "Corvane", "Scanner"}};
    controller->mSourceDSSelect = 0;
    controller->getTwiainDSInfo();
    EXPECT_EQ(controller->currentProductName, "Scanner");
    EXPECT_EQ(controller->currentDSIndex, 1);
    EXPECT_TRUE(controller->hasSourceBundle);
}

TEST_F(SourceSelectionTest, ChangesNothingWithoutABundle) {
    addSource("Corvane", "Scanner");
    connect();
    controller->currentProductName = "Earlier";
    controller->currentDSIndex = 3;
    controller->mSourceDSSelect = 0;
    controller->getTwiainDSInfo();
    EXPECT_EQ(controller->currentProductName, "Earlier");
    EXPECT_EQ(controller->currentDSIndex, 3);
    EXPECT_FALSE(controller->hasSourceBundle);
    controller->mSourceDSSelect = UINT32_MAX; // none chosen
    controller->getTwiainDSInfo();
    EXPECT_EQ(controller->currentProductName, "Earlier");
}

// --- choosing ---

TEST_F(SourceSelectionTest, FindsASourceByItsExactName) {
    addSource("Corvane", "One");
    addSource("Corvane", "Two");
    addSource("Hastell", "Two");
    connect();
    EXPECT_EQ(controller->CheckIdentityWithScannerName("Two"), 1U);
    EXPECT_EQ(controller->CheckIdentityWithScannerName("two"), 0U);
    EXPECT_EQ(controller->CheckIdentityWithScannerName("Gone"), 0U);
    EXPECT_EQ(controller->CheckIdentityWithScannerName(""), 0U);
}

TEST_F(SourceSelectionTest, FindsTheManagersDefault) {
    addSource("Corvane", "One");
    addSource("Corvane", "Two");
    connect();
    dsm.defaultSource = 1;
    EXPECT_EQ(controller->GetDefaultIdentityIndex(), 1U);
    dsm.fail(getDefault, twain::TWRC_FAILURE);
    EXPECT_EQ(controller->GetDefaultIdentityIndex(), 0U);
}

TEST_F(SourceSelectionTest, TestsTheChosenSourceByOpeningAndClosingIt) {
    addSource("Corvane", "One");
    addSource("Corvane", "Two");
    addSource("Corvane", "Three");
    connect();
    EXPECT_EQ(controller->CheckIdentity(1), 0);
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/GETFIRST",
                            "CONTROL/IDENTITY/GETNEXT",
                            "CONTROL/IDENTITY/OPENDS",
                            "CONTROL/IDENTITY/CLOSEDS"));
    EXPECT_EQ(gTWAINHandler->dsIdentity.ProductName.text(), "Two");
    EXPECT_EQ(controller->scannerName, "Two");
    EXPECT_EQ(controller->currentManufacturer, "Corvane");
    EXPECT_FALSE(dsm.isSourceOpen());
}

TEST_F(SourceSelectionTest, TellsSourcesOfOneNameApartByTheirMaker) {
    addSource("Corvane", "Same");
    addSource("Hastell", "Same");
    connect();
    EXPECT_EQ(controller->CheckIdentity(1), 0);
    EXPECT_EQ(gTWAINHandler->dsIdentity.Manufacturer.text(), "Hastell");
}

TEST_F(SourceSelectionTest, HandsBackTheCodeOfASourceThatDoesNotOpen) {
    addSource("Corvane", "One");
    connect();
    controller->scannerName = "Earlier";
    dsm.fail(openDs, twain::TWRC_SCANNERLOCKED);
    EXPECT_EQ(controller->CheckIdentity(0), twain::TWRC_SCANNERLOCKED);
    EXPECT_EQ(dsm.count(closeDs), 0U);
    EXPECT_EQ(controller->scannerName, "Earlier");
}

TEST_F(SourceSelectionTest, OpensTheLastListedSourceWhenTheChosenOneIsGone) {
    addSource("Corvane", "One");
    addSource("Corvane", "Two");
    connect();
    controller->dsArray[0] = TWAIN_INFO::from(sourceIdentity("Corvane", "Unplugged"));
    EXPECT_EQ(controller->CheckIdentity(0), 0);
    EXPECT_EQ(controller->scannerName, "Two");
}

TEST_F(SourceSelectionTest, RefusesAnIndexBeyondTheList) {
    addSource("Corvane", "One");
    connect();
    EXPECT_NE(controller->CheckIdentity(1), 0);
    EXPECT_NE(controller->CheckIdentity(UINT32_MAX), 0);
    EXPECT_THAT(dsm.calls(), IsEmpty());
}

TEST_F(SourceSelectionTest, OpensTheDefaultAndSelectsItsRow) {
    addSource("Corvane", "One");
    addSource("Hastell", "Two");
    connect();
    dsm.defaultSource = 1;
    controller->mSourceDSSelect = UINT32_MAX;
    EXPECT_EQ(controller->CheckDefaultIdentity(), 0);
    EXPECT_EQ(controller->scannerName, "Two");
    EXPECT_EQ(controller->currentManufacturer, "Hastell");
    EXPECT_EQ(controller->mSourceDSSelect, 1U);
    EXPECT_FALSE(dsm.isSourceOpen());
    dsm.fail(openDs, twain::TWRC_FAILURE);
    EXPECT_EQ(controller->CheckDefaultIdentity(), twain::TWRC_FAILURE);
}

TEST_F(SourceSelectionTest, SelectsThroughTheManagersDialog) {
    addSource("Corvane", "One");
    addSource("Corvane", "Two");
    connect();
    dsm.defaultSource = 1;
    EXPECT_EQ(controller->selectSource(), 0);
    EXPECT_EQ(gTWAINHandler->dsIdentity.ProductName.text(), "Two");
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/USERSELECT",
                            "CONTROL/IDENTITY/OPENDS",
                            "CONTROL/IDENTITY/CLOSEDS"));
    dsm.fail(openDs, twain::TWRC_SCANNERLOCKED, 2);
    EXPECT_EQ(controller->selectSource(), twain::TWRC_SCANNERLOCKED);
    dsm.fail(userSelect, twain::TWRC_CANCEL);
    dsm.forgetCalls();
    EXPECT_EQ(controller->selectSource(), twain::TWRC_CANCEL);
    EXPECT_EQ(dsm.count(openDs), 0U);
}

TEST_F(SourceSelectionTest, EndsTheSelectionWindowWithTheTwoModalResults) {
    QDialog window;
    controller->twainSelectSourceWindow = &window;
    controller->doBtnOK(nullptr);
    EXPECT_EQ(window.result(), -1000);
    controller->doBtnCancel(nullptr);
    EXPECT_EQ(window.result(), -1001);
    controller->twainSelectSourceWindow = nullptr;
    controller->doBtnOK(nullptr);
}

} // namespace
} // namespace paperline::test

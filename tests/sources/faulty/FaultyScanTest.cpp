// The faulty scanner as an application sees it: through the manager, the loader stub and the worker
// process.
#include "tests/sources/software/ManagerScan.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace paperline::sources {

using namespace twain;

namespace {

const std::filesystem::path buildTree = PAPERLINE_BUILD_TREE;
const std::string product = "Faulty Scanner";

// Every kind of misbehaviour after which an application can still end the scan.
const char* const endableFaults[] = {
    "enable-fail",     "enable-cancel",    "info-fail@2",
    "info-cancel@3",   "info-hang@1:1",    "setup-fail",
    "strip-fail@1",    "strip-cancel@2",   "strip-small:7",
    "strip-endless:2", "strip-endless@1",  "strip-small:9,strip-break@2",
    "info-width:0",    "info-width:-1",    "info-height:0",
    "info-bits:2",     "info-bits:16",     "info-bits:48",
    "info-samples:9",  "info-resolution",  "info-height:2147483647",
    "strip-outside",   "strip-short",      "strip-long",
    "strip-rows",      "strip-empty@2",    "end-count@3:1",
    "callback-twice",  "callback-late:50", "callback-thread",
    "callback-never",  "callback-close",
};

class FaultyScannerEndToEnd : public testing::Test {
protected:
    FaultyScannerEndToEnd() { setenv("PAPERLINE_WORKER_TIMEOUT", "2", 1); }
    ~FaultyScannerEndToEnd() override { unsetenv("PAPERLINE_WORKER_TIMEOUT"); }

    ManagerScan session{FAULTY_ROOT};
};

} // namespace

TEST_F(FaultyScannerEndToEnd, DeviceFaultsKeepTheEarlierPages) {
    ASSERT_TRUE(session.openManager(buildTree));
    struct Case {
        const char* name;
        uint16_t condition;
    };
    for (const auto& [name, condition] : {Case{"device-jam", TWCC_PAPERJAM},
                                          {"device-cover", TWCC_INTERLOCK},
                                          {"device-busy", TWCC_MAXCONNECTIONS},
                                          {"device-denied", TWCC_DENIED},
                                          {"device-offline", TWCC_CHECKDEVICEONLINE},
                                          {"device-error", TWCC_CHECKDEVICEONLINE},
                                          {"device-memory", TWCC_LOWMEMORY},
                                          {"device-invalid", TWCC_BADVALUE},
                                          {"device-unsupported", TWCC_BADVALUE},
                                          {"device-crash", TWCC_OPERATIONERROR},
                                          {"device-hang", conditionWorkerHung}}) {
        const std::string fault = smallPages + "fault=" + name;
        const auto first = session.scan(product, fault + "@1");
        EXPECT_EQ(first.enableCode, TWRC_FAILURE) << name;
        EXPECT_EQ(first.condition, condition) << name;
        EXPECT_TRUE(first.closed) << name;
        const auto last = session.scan(product, fault + "@last");
        expectWholePages(last, 2, name);
        EXPECT_EQ(last.endCode, TWRC_CHECKSTATUS) << name;
        EXPECT_EQ(last.condition, condition) << name;
        EXPECT_EQ(last.lastCount, 0) << name;
        EXPECT_TRUE(last.closed) << name;
    }
    expectWholePages(session.scan(product, smallPages), 3, "after all of them");
}

TEST_F(FaultyScannerEndToEnd, DeviceFaultsWhileOpening) {
    ASSERT_TRUE(session.openManager(buildTree));
    for (const auto& [name, condition] : {std::pair{"device-denied", TWCC_DENIED},
                                          {"device-crash", TWCC_OPERATIONERROR},
                                          {"device-hang", conditionWorkerHung},
                                          {"device-busy", TWCC_MAXCONNECTIONS}}) {
        const auto result = session.scan(product, smallPages + "fault=" + std::string(name) + "@0");
        EXPECT_EQ(result.openCode, TWRC_FAILURE) << name;
        EXPECT_EQ(result.condition, condition) << name;
    }
    expectWholePages(session.scan(product, smallPages), 3, "after all of them");
}

TEST_F(FaultyScannerEndToEnd, AnEmptyFeederAndTheCancelButton) {
    ASSERT_TRUE(session.openManager(buildTree));
    auto result = session.scan(product, smallPages + "fault=device-empty@1");
    EXPECT_EQ(result.enableCode, TWRC_FAILURE);
    EXPECT_EQ(result.condition, TWCC_NOMEDIA);
    result = session.scan(product, smallPages + "fault=device-empty@2");
    expectWholePages(result, 1, "empty");
    EXPECT_EQ(result.endCode, TWRC_SUCCESS);
    result = session.scan(product, smallPages + "fault=device-cancel@1");
    EXPECT_EQ(result.enableCode, TWRC_CANCEL);
    result = session.scan(product, smallPages + "fault=device-cancel@3");
    expectWholePages(result, 2, "cancelled");
    EXPECT_EQ(result.endCode, TWRC_CANCEL);
}

// Whatever the source does, a careful application comes out of it with the session intact.
TEST_F(FaultyScannerEndToEnd, SourceFaultsEndInAClosedSource) {
    ASSERT_TRUE(session.openManager(buildTree));
    for (const std::string fault : endableFaults) {
        const auto result = session.scan(product, smallPages + "fault=" + fault);
        EXPECT_EQ(result.openCode, TWRC_SUCCESS) << fault;
        EXPECT_TRUE(result.closed) << fault;
    }
    expectWholePages(session.scan(product, smallPages + "fault=strip-small:7"), 3, "small strips");
    expectWholePages(session.scan(product, smallPages), 3, "after all of them");
}

// A source that refuses to end cannot be closed; the application's process must still get out of
// it.
TEST_F(FaultyScannerEndToEnd, ASourceThatRefusesToEndDoesNotHoldTheProcess) {
    for (const std::string fault : {"end-fail@2", "end-cancel@last", "disable-fail", "close-fail"})
        EXPECT_EXIT(
            {
                const bool opened = session.openManager(buildTree);
                const auto result = session.scan(product, smallPages + "fault=" + fault);
                std::exit(opened && !result.closed && !result.pages.empty() ? 0 : 1);
            },
            testing::ExitedWithCode(0),
            "")
            << fault;
}

TEST_F(FaultyScannerEndToEnd, VanishesBetweenSelectionAndScan) {
    ASSERT_TRUE(session.openManager(buildTree));
    EXPECT_EQ(session.scan(product, smallPages + "fault=vanish").pages.size(), 3u);
    const auto result = session.scan(product, smallPages + "fault=vanish");
    EXPECT_EQ(result.openCode, TWRC_FAILURE);
    EXPECT_EQ(result.condition, TWCC_NODS);
}

} // namespace paperline::sources

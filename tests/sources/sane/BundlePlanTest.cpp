#include "sources/sane/BundlePlan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace paperline::sources {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

SaneDeviceEntry device(const char* name, const char* vendor, const char* model) {
    return {name, vendor, model};
}

const SaneDeviceEntry first = device("usb:1", "Noname", "S 500");
const SaneDeviceEntry second = device("usb:2", "Noname", "S 500");
const KnownBundle firstBundle{"Noname S 500.ds", "Noname S 500", "usb:1"};
const KnownBundle secondBundle{"Noname S 500 2.ds", "Noname S 500 2", "usb:2"};

TEST(ProductName, IsVendorAndModelInOneLine) {
    EXPECT_EQ(productBaseName(device("x", "Noname", "frontend-tester")), "Noname frontend-tester");
    EXPECT_EQ(productBaseName(device("x", "  Noname\t", " A\n\n4 \x7f")), "Noname A 4");
    EXPECT_EQ(productBaseName(device("x", "", "S 500")), "S 500");
    EXPECT_EQ(productBaseName(device("x", "Noname", "")), "Noname");
    EXPECT_EQ(productBaseName(device("x", "noname", "Noname S 500")), "Noname S 500");
    EXPECT_EQ(productBaseName(device("x", "No", "Noname")), "No Noname");
    EXPECT_EQ(productBaseName(device("x", " ", "\n")), "Scanner");
}

TEST(ProductName, HasAtMost32BytesOfWholeCharacters) {
    EXPECT_EQ(productBaseName(device("x", "Noname", "0123456789012345678901234567")),
              "Noname 0123456789012345678901234");
    // The 32nd byte would be the first of two.
    EXPECT_EQ(productBaseName(device("x", "Noname", "012345678901234567890123\xC3\xA9")),
              "Noname 012345678901234567890123");
    EXPECT_EQ(productBaseName(device("x", "Noname", "01234567890123456789012\xC3\xA9")),
              "Noname 01234567890123456789012\xC3\xA9");
    // No blank stays at the cut.
    EXPECT_EQ(productBaseName(device("x", "Noname", "012345678901234567890123 5")),
              "Noname 012345678901234567890123");
}

TEST(ProductName, ANumberStaysWithinTheLimit) {
    EXPECT_EQ(numberedProductName("Noname S 500", 1), "Noname S 500");
    EXPECT_EQ(numberedProductName("Noname S 500", 12), "Noname S 500 12");
    EXPECT_EQ(numberedProductName("01234567890123456789012345678901", 2),
              "012345678901234567890123456789 2");
    EXPECT_EQ(numberedProductName("0123456789012345678901234567\xC3\xA9\xC3\xA9", 10),
              "0123456789012345678901234567 10");
}

TEST(BundleFolderName, StaysInItsFolderAndIsSeen) {
    EXPECT_EQ(bundleFolderName("Noname S 500"), "Noname S 500.ds");
    EXPECT_EQ(bundleFolderName("../../etc/x"), "_._.._etc_x.ds");
    EXPECT_EQ(bundleFolderName(".hidden"), "_hidden.ds");
}

TEST(BundlePlan, GivesEqualDevicesNumbers) {
    const BundlePlan plan = planBundles({}, {}, {first, second}, {});
    EXPECT_THAT(plan.bundles, ElementsAre(firstBundle, secondBundle));
    EXPECT_THAT(plan.obsolete, IsEmpty());
}

TEST(BundlePlan, KeepsNamesWhateverTheOrder) {
    const BundlePlan plan = planBundles({firstBundle, secondBundle}, {}, {second, first}, {});
    EXPECT_THAT(plan.bundles, ElementsAre(secondBundle, firstBundle));
}

TEST(BundlePlan, ADeviceKeepsItsNumberWhenTheOtherGoesAndItsNameIsFreeAgain) {
    BundlePlan plan = planBundles({firstBundle, secondBundle}, {}, {second}, {});
    EXPECT_THAT(plan.bundles, ElementsAre(secondBundle));
    EXPECT_THAT(plan.obsolete, ElementsAre(firstBundle));
    plan = planBundles({secondBundle}, {}, {first, second}, {});
    EXPECT_THAT(plan.bundles, ElementsAre(firstBundle, secondBundle));
}

TEST(BundlePlan, TheSameModelAtAnotherPortTakesItsBundleOver) {
    const SaneDeviceEntry moved = device("usb:9", "Noname", "S 500");
    const BundlePlan plan = planBundles({firstBundle}, {}, {moved}, {});
    EXPECT_THAT(plan.bundles, ElementsAre(KnownBundle{"Noname S 500.ds", "Noname S 500", "usb:9"}));
    EXPECT_THAT(plan.obsolete, IsEmpty());
}

TEST(BundlePlan, AnotherModelAtTheSamePortGetsABundleOfItsOwn) {
    const SaneDeviceEntry other = device("usb:1", "Noname", "S 501");
    const BundlePlan plan = planBundles({firstBundle}, {}, {other}, {});
    EXPECT_THAT(plan.bundles, ElementsAre(KnownBundle{"Noname S 501.ds", "Noname S 501", "usb:1"}));
    EXPECT_THAT(plan.obsolete, ElementsAre(firstBundle));
}

TEST(BundlePlan, LeavesOtherEntriesTheirNames) {
    const BundlePlan plan = planBundles({}, {"Noname S 500.ds"}, {first}, {});
    EXPECT_THAT(plan.bundles,
                ElementsAre(KnownBundle{"Noname S 500 2.ds", "Noname S 500 2", "usb:1"}));
    // Two products may want one folder name.
    const BundlePlan slashes =
        planBundles({}, {}, {device("a", "", "A/B"), device("b", "", "A_B")}, {});
    EXPECT_EQ(slashes.bundles[0].folder, "A_B.ds");
    EXPECT_EQ(slashes.bundles[1].folder, "A_B 2.ds");
}

TEST(BundlePlan, KeepsTheBundlesOfABackendThatFailed) {
    const KnownBundle silent{"Noname N.ds", "Noname N", "net:host:1"};
    const SaneDeviceEntry another = device("usb:3", "Noname", "N");
    const BundlePlan plan = planBundles({firstBundle, silent}, {}, {another}, {"net"});
    EXPECT_THAT(plan.bundles,
                ElementsAre(KnownBundle{"Noname N 2.ds", "Noname N 2", "usb:3"}, silent));
    EXPECT_THAT(plan.obsolete, ElementsAre(firstBundle));
}

TEST(BundlePlan, ABackendIsTheStartOfTheDevicesName) {
    EXPECT_EQ(backendOfDevice("net:host:test:0"), "net");
    EXPECT_EQ(backendOfDevice("v4l"), "v4l");
}

} // namespace
} // namespace paperline::sources

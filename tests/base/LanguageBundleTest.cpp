#include "base/LanguageBundle.h"

#include "platform/files/FileContent.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

namespace paperline {
namespace {

class LanguageBundleTest : public testing::Test {
protected:
    void writeTexts(std::string_view text) const {
        ASSERT_TRUE(writeFile(folder_ + "/Localizable.strings",
                              {reinterpret_cast<const uint8_t*>(text.data()), text.size()}));
    }
    const testing_support::TestFolder testFolder_;
    const std::string& folder_ = testFolder_.path();
};

TEST_F(LanguageBundleTest, IsNothingWithoutItsFolder) {
    EXPECT_EQ(LanguageBundle::load(folder_ + "/none.lproj"), nullptr);
}

TEST_F(LanguageBundleTest, GivesTheKeyWithoutAStringsFile) {
    const auto bundle = LanguageBundle::load(folder_);
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(bundle->localizedString("Scan"), "Scan");
    EXPECT_EQ(bundle->folder(), folder_);
}

TEST_F(LanguageBundleTest, GivesTextsAndForAMissingOneItsKey) {
    writeTexts("\"Scan\" = \"Scannen\";");
    const auto bundle = LanguageBundle::load(folder_);
    EXPECT_EQ(bundle->localizedString("Scan"), "Scannen");
    EXPECT_EQ(bundle->localizedString("Setup"), "Setup");
}

TEST_F(LanguageBundleTest, KeepsTheTextsBeforeADamage) {
    writeTexts("\"Scan\" = \"Scannen\";\n\"Setup\" = ");
    EXPECT_EQ(LanguageBundle::load(folder_)->localizedString("Scan"), "Scannen");
}

TEST_F(LanguageBundleTest, LeavesAFileAloneThatIsTooLongForATableOfTexts) {
    writeTexts("\"Scan\" = \"Scannen\";" + std::string(5 * 1024 * 1024, ' '));
    EXPECT_EQ(LanguageBundle::load(folder_)->localizedString("Scan"), "Scan");
}

TEST(LocalizedString, IsTheKeyWithoutABundle) {
    EXPECT_EQ(localizedString(nullptr, "Scan"), "Scan");
}

} // namespace
} // namespace paperline

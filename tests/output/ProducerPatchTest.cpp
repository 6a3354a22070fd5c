#include "output/ProducerPatch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace paperline {
namespace {

std::vector<uint8_t> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

// Finds and patches as the operation does.
std::string patched(const std::string& pdf, const std::string& model) {
    std::vector<uint8_t> bytes = bytesOf(pdf);
    const ProducerPlace place = findProducer(bytes);
    if (place.object)
        patchProducer(bytes, place.text, model);
    return {bytes.begin(), bytes.end()};
}

const std::string producer34(34, 'p');

TEST(ModelName, IsSplitAtItsFirstBlank) {
    const MakeAndModel names = splitModelName("Alpha 3000 Duplex");
    EXPECT_EQ(names.make, "Alpha ");
    EXPECT_EQ(names.model, "3000 Duplex");
}

TEST(ModelName, WithoutABlankIsBoth) {
    const MakeAndModel names = splitModelName("Scanner");
    EXPECT_EQ(names.make, "Scanner ");
    EXPECT_EQ(names.model, "Scanner");
}

TEST(ModelName, EveryOccurrenceOfTheMakeGoes) {
    EXPECT_EQ(splitModelName("A A B A C").model, "B C");
    EXPECT_EQ(splitModelName("").make, " ");
    EXPECT_EQ(splitModelName("").model, "");
    EXPECT_EQ(splitModelName(" x y").make, " "); // a leading blank: the make is that blank
    EXPECT_EQ(splitModelName(" x y").model, "xy");
}

TEST(ProducerPatch, AShorterModelIsPaddedWithZeroBytesUpToTheParenthesis) {
    const std::string before = "%PDF\n<< /Producer 12 0 R >>\n12 0 obj\n(";
    const std::string after = ")\nendobj\n";
    EXPECT_EQ(patched(before + producer34 + after, "3000 Duplex"),
              before + "3000 Duplex" + std::string(23, '\0') + after);
}

TEST(ProducerPatch, AShorterProducerEndsThePaddingEarly) {
    const std::string before = "/Producer 4 0 R\n4 0 obj\n(";
    EXPECT_EQ(patched(before + "platform text)\nendobj (rest of the file)", "AB"),
              before + "AB" + std::string(11, '\0') + ")\nendobj (rest of the file)");
}

TEST(ProducerPatch, ALongModelRunsOverTheParenthesisUpTo34Bytes) {
    const std::string before = "/Producer 4 0 R\n4 0 obj\n(";
    const std::string model(50, 'm');
    EXPECT_EQ(patched(before + "short)" + std::string(60, '.'), model),
              before + std::string(34, 'm') + std::string(32, '.'));
}

TEST(ProducerPatch, TheFileNeverGrows) {
    const std::string before = "/Producer 4 0 R\n4 0 obj\n(";
    EXPECT_EQ(patched(before + "ab", "longer than the rest"), before + "lo");
    EXPECT_EQ(patched("/Producer 4 0 R\n4 0 obj\n", "x"), "/Producer 4 0 R\n4 0 obj\n");
}

TEST(ProducerPatch, WithoutTheKeyOrTheObjectNothingIsFound) {
    EXPECT_FALSE(findProducer(bytesOf("%PDF /Creator 4 0 R")).key.has_value());
    const ProducerPlace place = findProducer(bytesOf("/Producer 4 0 R\n5 0 obj\n(x)"));
    EXPECT_EQ(place.key, 1U);
    EXPECT_FALSE(place.object.has_value());
    EXPECT_EQ(patched("/Producer 4 0 R\n5 0 obj\n(x)", "M"), "/Producer 4 0 R\n5 0 obj\n(x)");
    EXPECT_EQ(findProducer(bytesOf("Producer")).key, 0U); // at the file's very end
    EXPECT_FALSE(findProducer({}).key.has_value());
}

TEST(ProducerPatch, TheReferenceIsNineBytesLong) {
    const ProducerPlace place = findProducer(bytesOf("/Producer 123 0 R >>endobj 123 0 obj\n(t)"));
    EXPECT_EQ(place.reference, "123 0 R >");
    ASSERT_TRUE(place.object.has_value());
    EXPECT_EQ(*place.object, 27U);
    EXPECT_EQ(place.text, 27U + 3 + 8);
}

} // namespace
} // namespace paperline

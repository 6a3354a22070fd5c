#include "output/ProducerPatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace paperline {
namespace {

FileToPatch inMemory(const std::string& file) {
    return {.find = [&file](std::string_view bytes) -> std::optional<uint64_t> {
                const size_t found = file.find(bytes);
                return found == std::string::npos ? std::nullopt : std::optional<uint64_t>(found);
            },
            .read =
                [&file](uint64_t position, size_t count) {
                    const std::string bytes =
                        file.substr(std::min<size_t>(position, file.size()), count);
                    return std::vector<uint8_t>(bytes.begin(), bytes.end());
                }};
}

ProducerPlace placeIn(const std::string& pdf) {
    return findProducer(inMemory(pdf));
}

// Finds and patches as the operation does.
std::string patched(const std::string& pdf, const std::string& model) {
    const ProducerPlace place = placeIn(pdf);
    if (!place.object)
        return pdf;
    std::vector<uint8_t> text = inMemory(pdf).read(place.text, producerPatchBytes + 1);
    patchProducer(text, model);
    return std::string(pdf).replace(std::min<size_t>(place.text, pdf.size()),
                                    text.size(),
                                    std::string(text.begin(), text.end()));
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

TEST(ProducerPatch, AParenthesisBehindTheModelStays) {
    const std::string before = "/Producer 4 0 R\n4 0 obj\n(";
    EXPECT_EQ(patched(before + "1234)6789)" + std::string(40, '.'), "ABCD"),
              before + "ABCD)6789)" + std::string(40, '.'));
    EXPECT_EQ(patched(before + ")" + std::string(40, '.'), ""),
              before + ")" + std::string(40, '.'));
}

TEST(ProducerPatch, WithoutAParenthesisThirtyFourBytesAreCleared) {
    const std::string before = "/Producer 4 0 R\n4 0 obj\n(";
    EXPECT_EQ(patched(before + std::string(40, '.'), "AB"),
              before + "AB" + std::string(32, '\0') + std::string(6, '.'));
    EXPECT_EQ(patched(before + std::string(40, '.'), std::string(34, 'm')),
              before + std::string(34, 'm') + std::string(6, '.'));
}

TEST(ProducerPatch, TheFirstOfSeveralCounts) {
    const std::string pdf =
        "4 0 obj\n(one)\nProducer /Producer 4 0 R\n4 0 obj\n(two) 14 0 obj\n(x)";
    EXPECT_EQ(placeIn(pdf).key, 14U);              // the bare word
    EXPECT_FALSE(placeIn(pdf).object.has_value()); // whose value is no reference
    // The object's number is looked for as a text: the first that ends like it is taken.
    EXPECT_EQ(patched("14 0 obj\n(fourteen)\n/Producer 4 0 R\n4 0 obj\n(four)", "M"),
              "14 0 obj\n(M" + std::string(7, '\0') + ")\n/Producer 4 0 R\n4 0 obj\n(four)");
}

TEST(ProducerPatch, TheModelIsUtf8) {
    const std::string before = "/Producer 4 0 R\n4 0 obj\n(";
    EXPECT_EQ(patched(before + producer34 + ")",
                      "\xC3\x9C"
                      "9"),
              before +
                  "\xC3\x9C"
                  "9" +
                  std::string(31, '\0') + ")");
}

TEST(ProducerPatch, TheFileNeverGrows) {
    const std::string before = "/Producer 4 0 R\n4 0 obj\n(";
    EXPECT_EQ(patched(before + "ab", "longer than the rest"), before + "lo");
    EXPECT_EQ(patched(before + "abc", "M"), before + std::string("M\0\0", 3));
    EXPECT_EQ(patched("/Producer 4 0 R\n4 0 obj\n", "x"), "/Producer 4 0 R\n4 0 obj\n");
}

TEST(ProducerPatch, WithoutTheKeyOrTheObjectNothingIsFound) {
    EXPECT_FALSE(placeIn("%PDF /Creator 4 0 R").key.has_value());
    const ProducerPlace place = placeIn("/Producer 4 0 R\n5 0 obj\n(x)");
    EXPECT_EQ(place.key, 1U);
    EXPECT_FALSE(place.object.has_value());
    EXPECT_EQ(patched("/Producer 4 0 R\n5 0 obj\n(x)", "M"), "/Producer 4 0 R\n5 0 obj\n(x)");
    EXPECT_EQ(placeIn("Producer").key, 0U); // at the file's very end
    EXPECT_FALSE(placeIn({}).key.has_value());
}

TEST(ProducerPatch, TheReferenceIsNineBytesLong) {
    const ProducerPlace place = placeIn("/Producer 123 0 R >>endobj 123 0 obj\n(t)");
    EXPECT_EQ(place.reference, "123 0 R >");
    ASSERT_TRUE(place.object.has_value());
    EXPECT_EQ(*place.object, 27U);
    EXPECT_EQ(place.text, 27U + 3 + 8);
}

} // namespace
} // namespace paperline

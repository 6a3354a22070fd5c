// Batches of multi-page formats with joiners that list what they were given.
#pragma once

#include "OutputFixture.h"

namespace paperline {

class MultiPage : public OutputTest {
protected:
    void SetUp() override {
        OutputTest::SetUp();
        PageCodecs& codecs = pageCodecs();
        codecs.tiff = codecs.png = codecs.gif = codecs.jpeg = [](const BitmapImageRep&, Density) {
            return Bytes{'p', 'a', 'g', 'e'};
        };
        codecs.pdf = listingJoiner();
        codecs.tiffDeclared300Dpi = listingJoiner();
        codecs.tiffUnchanged = listingJoiner();
    }
    void saveThree(int32_t format) {
        controller->profileFileformatSelect = format;
        for (int i = 0; i < 3; ++i)
            ASSERT_EQ(saveGrey(), 0);
        ++controller->currentPage; // the transfer's end does so before it joins
    }
};

class FullDiskJoiner : public PageJoiner {
public:
    Added add(const std::string&) override { return Added::yes; }
    bool finish() override {
        failure_ = "No space left on device";
        return false;
    }
};

} // namespace paperline

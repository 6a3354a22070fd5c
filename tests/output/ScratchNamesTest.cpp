#include "output/ScratchNames.h"

#include <gtest/gtest.h>

namespace paperline {
namespace {

TEST(ScratchFiles, AreThePreviewTheThumbnailAndWhatLiesBelowTheTemporaryRoot) {
    const ScratchPlaces place = [](const std::string& name) { return "/x" + name; };
    EXPECT_TRUE(isScratchFile("/x/tmp/CPL_image.bmp", place));
    EXPECT_TRUE(isScratchFile("/x/tmp/1.jpg", place));
    EXPECT_TRUE(isScratchFile("/x/tmp/CorvaneTempImage/MultiImage/Image_00001.jpg", place));
    EXPECT_FALSE(isScratchFile("/tmp/1.jpg", place));
    EXPECT_FALSE(isScratchFile("/x/tmp/CorvaneTempImage", place));
    EXPECT_FALSE(isScratchFile("/x/tmp/Image_00001.jpg", place));
}

} // namespace
} // namespace paperline

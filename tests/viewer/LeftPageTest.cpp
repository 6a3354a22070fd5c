// What the page view still has of a page that another row was chosen after.
#include "PageWindow.h"
#include "platform/desktop/MainLoop.h"

#include <chrono>
#include <filesystem>
#include <memory>

namespace paperline {
namespace {

// Row 0 was chosen and drawn.
class LeftPage : public PageWindow {
protected:
    LeftPage() {
        using namespace std::chrono_literals;
        for (const char* name : {"a.bmp", "b.bmp", "c.bmp"})
            std::filesystem::last_write_time(addPicture(name),
                                             std::filesystem::file_time_type::clock::now() - 1h);
        controller_.GetImageFromImageFolder();
        controller_.reloadMainTable();
        select(0);
        raster_ = controller_.mImageView->mImage;
        grabView(); // the view lets go of it
    }
    void select(int row) { controller_._tableViewMain->selectRow(row); }
    bool isKept() const { return controller_.mImageView->mImage == raster_; }

    std::shared_ptr<const PageRaster> raster_;
};

TEST_F(LeftPage, IsKeptForWhoGoesBack) {
    select(1);
    select(0);
    EXPECT_TRUE(isKept());
}

TEST_F(LeftPage, IsForgottenAfterALeap) {
    select(2);
    select(0);
    EXPECT_FALSE(isKept());
}

TEST_F(LeftPage, IsForgottenDuringAScan) {
    const DelayedMessagesHold scan;
    select(1);
    select(0);
    EXPECT_FALSE(isKept());
}

} // namespace
} // namespace paperline

// Operations of the controller that scale images.
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "output/ImageScaling.h"

#include <memory>

namespace paperline {

Image AppDelegate::imageByScalingProportionallyToSize(Size targetSizePoints,
                                                      const Image& sourceImage) {
    TraceScope trace("imageByScalingProportionallyToSize");
    if (!sourceImage.isValid() || sourceImage.representations().front() == nullptr)
        return {};
    Image result(drawScaled(*sourceImage.representations().front(),
                            targetSizePoints,
                            placeProportionally(sourceImage.size(), targetSizePoints)));
    if (result.isValid())
        result.setSize(targetSizePoints);
    return result;
}

Image AppDelegate::saveAsJpegWithName_scaleSize_4PDF(const Image& image) {
    TraceScope trace("saveAsJpegWithName_scaleSize_4PDF");
    const Size quarter{image.size().width / 4, image.size().height / 4};
    const Image scaled = imageByScalingProportionallyToSize(quarter, image);
    if (!scaled.isValid())
        return {};
    const std::shared_ptr<BitmapImageRep>& representation = scaled.representations().front();
    representation->setSize({static_cast<double>(representation->pixelsWide()),
                             static_cast<double>(representation->pixelsHigh())});
    Image result(representation);
    result.setSize({representation->size().width, quarter.height});
    return result;
}

} // namespace paperline

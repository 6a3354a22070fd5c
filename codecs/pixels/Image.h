// An image object: one representation per page, with a size in points.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <memory>
#include <utility>
#include <vector>

namespace paperline {

class Image {
public:
    Image() = default;
    explicit Image(std::shared_ptr<BitmapImageRep> representation)
        : size_(representation ? representation->size() : Size{}) {
        if (representation)
            representations_.push_back(std::move(representation));
    }

    bool isValid() const { return !representations_.empty(); }
    Size size() const { return size_; }
    void setSize(Size sizePoints) { size_ = sizePoints; }
    void addRepresentation(std::shared_ptr<BitmapImageRep> representation) {
        representations_.push_back(std::move(representation));
    }
    const std::vector<std::shared_ptr<BitmapImageRep>>& representations() const {
        return representations_;
    }

private:
    std::vector<std::shared_ptr<BitmapImageRep>> representations_;
    Size size_;
};

} // namespace paperline

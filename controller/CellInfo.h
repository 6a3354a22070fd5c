// One row of the page list.
#pragma once

#include <QImage>

#include <string>

namespace paperline {

struct CellInfo {
    std::string title; // always empty
    std::string subtitle;
    QImage image; // thumbnail, decoded once
    std::string imageFullPath;
    int imageIndex = 0; // page inside the file
};

} // namespace paperline

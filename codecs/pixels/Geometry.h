// Plain sizes and rectangles in points, y growing upward unless a user says otherwise.
#pragma once

namespace paperline {

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
};

} // namespace paperline

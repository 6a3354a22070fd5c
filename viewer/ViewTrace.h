// The debug trace as the widgets of this folder see it: two callbacks, given by the controller.
#pragma once

#include <cstdint>
#include <functional>

namespace paperline {

struct ViewTrace {
    std::function<void(const char* operation, const char* marker)> line;
    std::function<void(const char* label, int32_t value)> value;
};

// Traces "In " when made and "Out" when it goes. A view without a trace costs one test.
class ViewTraceScope {
public:
    ViewTraceScope(const ViewTrace& trace, const char* operation)
        : trace_(trace), operation_(operation) {
        if (trace_.line)
            trace_.line(operation_, "In ");
    }
    ~ViewTraceScope() {
        if (trace_.line)
            trace_.line(operation_, "Out");
    }
    ViewTraceScope(const ViewTraceScope&) = delete;
    ViewTraceScope& operator=(const ViewTraceScope&) = delete;

private:
    const ViewTrace& trace_;
    const char* operation_;
};

} // namespace paperline

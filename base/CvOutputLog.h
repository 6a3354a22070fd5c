// The debug trace, off unless the switch file "/tmp/DrvLog/Debug.conf" turns it on.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace paperline {

class CvOutputLog {
public:
    // Reads the level from the switch file and sets the paths if it is above 0. Called once.
    void setDebugLevelAndCreateLogFile();

    // Writes "<functionStatus> <functionReturn>: <subject>" and ": <data>" unless that is -1. May
    // be called from any thread.
    void outputDebugLog(std::string_view subject,
                        std::string_view functionStatus,
                        int32_t functionReturn,
                        int64_t data,
                        uint32_t type) {
        if (debugLevel > 0)
            writeNumberEntry(subject, functionStatus, functionReturn, data, type);
    }
    // For a text as data (type 1).
    void outputDebugLog(std::string_view subject,
                        std::string_view functionStatus,
                        int32_t functionReturn,
                        std::string_view data,
                        uint32_t type) {
        if (debugLevel > 0)
            writeTextEntry(subject, functionStatus, functionReturn, data, type);
    }

    int32_t debugLevel = 0;
    // Set while an entry is written. No lock: writers wait a limited time only.
    volatile bool logWritting = false;
    std::string logPath;
    std::string debugFile;
    std::string logDir;

private:
    void writeNumberEntry(std::string_view, std::string_view, int32_t, int64_t, uint32_t);
    void writeTextEntry(std::string_view, std::string_view, int32_t, std::string_view, uint32_t);
    void append(const std::string& entry);
};

extern CvOutputLog* gOutputLog; // made by AppDelegate::init before anything else

// For callers that would build a text only to trace it.
inline bool isTracing() {
    return gOutputLog != nullptr && gOutputLog->debugLevel > 0;
}

// Traces "In " when made and "Out" when it goes: one per operation, at its start.
class TraceScope {
public:
    explicit TraceScope(const char* operation) : operation_(operation) { write("In "); }
    ~TraceScope() { write("Out"); }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

private:
    void write(const char* marker) const {
        if (gOutputLog != nullptr)
            gOutputLog->outputDebugLog(operation_, marker, 1, int64_t{-1}, 0);
    }
    const char* operation_;
};

// Traces "    7: _selectedRaw".
inline void traceValue(const char* label, int32_t value) {
    if (gOutputLog != nullptr)
        gOutputLog->outputDebugLog(label, "   ", value, int64_t{-1}, 0);
}
// Trace "<label> : <number or text>".
inline void traceNumber(const char* label, const char* marker, int32_t number) {
    if (gOutputLog != nullptr)
        gOutputLog->outputDebugLog(label, marker, 1, int64_t{number}, 0);
}
inline void traceText(const char* label, std::string_view text) {
    if (gOutputLog != nullptr)
        gOutputLog->outputDebugLog(label, "   ", 1, text, 1);
}
inline void traceLine(const char* subject, const char* marker = "   ") {
    if (gOutputLog != nullptr)
        gOutputLog->outputDebugLog(subject, marker, 1, int64_t{-1}, 0);
}

} // namespace paperline

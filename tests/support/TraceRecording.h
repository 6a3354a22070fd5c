// What is traced while an object of this lives.
#pragma once

#include "base/CvOutputLog.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/TestFolder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace paperline::testing_support {

class TraceRecording {
public:
    TraceRecording() {
        log_.debugLevel = 1;
        log_.logPath = folder_ / "trace.txt";
        gOutputLog = &log_;
    }
    ~TraceRecording() { gOutputLog = before_; }
    TraceRecording(const TraceRecording&) = delete;
    TraceRecording& operator=(const TraceRecording&) = delete;

    // "In  1: drawRect": without byte-order marks, times and line feeds, as ASCII.
    std::vector<std::string> entries() const {
        const std::vector<uint8_t> bytes = readFile(log_.logPath).value_or(std::vector<uint8_t>{});
        std::vector<std::string> entries;
        std::string line;
        for (size_t n = 0; n + 1 < bytes.size(); n += 2) {
            const int unit = bytes[n] | bytes[n + 1] << 8;
            if (unit == '\n') {
                entries.push_back(line.substr(line.find(" ==> ") + 5));
                line.clear();
            } else if (unit != 0xfeff) {
                line += unit < 0x80 ? static_cast<char>(unit) : '?';
            }
        }
        return entries;
    }
    void clear() { removePath(log_.logPath); }

private:
    const TestFolder folder_;
    CvOutputLog log_;
    CvOutputLog* const before_ = gOutputLog;
};

} // namespace paperline::testing_support

// Turning the main loop in a test, and files that a test lays out.
#pragma once

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"

#include <gtest/gtest.h>

#include <QEventLoop>
#include <QTimer>

#include <string>
#include <vector>

namespace paperline::testing_support {

inline constexpr int longestScanMilliseconds = 10'000;

// Turns the main loop until the counter is raised; false when that does not happen in ten seconds.
[[nodiscard]] inline bool runUntilRaised(const int& counter) {
    const int before = counter;
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (counter > before)
            loop.quit();
    });
    poll.start(5);
    QTimer::singleShot(longestScanMilliseconds, &loop, &QEventLoop::quit);
    loop.exec();
    return counter > before;
}

// The file with these contents, its folders made where they are missing.
inline void writeTextFile(const std::string& path, const std::string& text) {
    EXPECT_TRUE(createFolderWithParents(folderOfPath(path)));
    EXPECT_TRUE(writeFile(path, std::vector<uint8_t>(text.begin(), text.end())));
}

} // namespace paperline::testing_support

// A controller without a window against a scripted manager, with a machine that has memory and
// space, alerts recorded by their keys, and a save folder of the test's own.
#pragma once

#include "ScriptedDsm.h"
#include "controller/AppDelegate.h"
#include "tests/support/TestFolder.h"
#include "ui/SaveFolderTextField.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace paperline::test {

class SessionFixture : public ::testing::Test {
protected:
    SessionFixture();
    ~SessionFixture() override;

    // One more source that the manager lists; the first one added is opened by connect().
    ScriptedSource& addSource(std::string_view manufacturer = "Corvane",
                              std::string_view productName = "Scanner");
    // A new controller and an empty save folder against a manager that has been reset: for loops
    // over many sessions in one test.
    void startOver();
    // TwainInit, the list of sources, and the first source as the current one.
    void connect();
    // Turns the main loop until the scan has ended; false after ten seconds.
    [[nodiscard]] bool runUntilScanEnds();
    // Turns the main loop for a while.
    void runFor(int milliseconds);
    // Opens, enables and runs the transfer at once, as if its message had come.
    void scanAtOnce();

    std::string savedPath(int number, const std::string& extension = "bmp") const;
    std::string scratchFolder() const;
    void writeTextFile(const std::string& path, const std::string& text) const;

    ScriptedDsm dsm;
    SaveFolderTextField folderField;
    std::unique_ptr<AppDelegate> controller;
    std::vector<std::string> alerts;      // keys of the messages shown
    std::vector<std::string> revealed;    // folders shown in the file manager
    uint64_t availableBytes = 0xffffffff; // the low 32 bits are large
    std::string folder;                   // save folder, fresh
    int scansEnded = 0;

private:
    void makeController();
    const testing_support::TestFolder testFolder_;
    const std::string& root_ = testFolder_.path();
    std::string bundleBefore_;
};

// Pixels of a BMP file as a page has them: top row first, RGB, rows packed to whole bytes.
struct BmpPixels {
    int32_t widthPixels = 0;
    int32_t heightPixels = 0;
    int bitsPerPixel = 0;
    int32_t pixelsPerMetre = 0;
    std::vector<uint8_t> bytes;
};
BmpPixels readBmp(const std::string& path);

} // namespace paperline::test

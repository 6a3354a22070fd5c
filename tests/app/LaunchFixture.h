// The whole controller from process start to its end against a scripted manager: real widgets on
// the offscreen platform, a bundle, a home and data source bundles of the test's own, and a machine
// whose user, language and clock stand still.
#pragma once

#include "ScriptedDsm.h"
#include "controller/AppDelegate.h"
#include "platform/desktop/Alert.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace paperline::test {

class LaunchFixture : public ::testing::Test {
protected:
    LaunchFixture();
    ~LaunchFixture() override;

    // One more source that the manager lists, with a bundle on disk that can keep a language.
    ScriptedSource& addSource(std::string_view productName,
                              std::string_view manufacturer = "Corvane");
    // What `launch` does to the selection window when it shows; without one a shown window fails
    // the test.
    void whenAsked(std::function<void(AppDelegate&)> choose) { choose_ = std::move(choose); }
    // init, the interface and both launch messages, as at process start. False: init gave nothing.
    bool launch(uint32_t brand = 7);
    // The main window closes, then the application ends as it does behind the main loop.
    void closeAndEnd();
    // The same without the window's part: logout and signals.
    void end();
    // Turns the main loop until the scan or the settings dialog has ended; false after ten seconds.
    [[nodiscard]] bool runUntilScanEnds();

    void chooseRow(AppDelegate& asked, int row) const;
    std::string settingsFile() const { return bundle + "/Contents/MACOS/CvPaperline_lng.plist"; }
    void writeSettings(const std::string& dictionaryBody) const;
    std::string settingsText() const; // empty: no file
    std::string sourceBundle(std::string_view productName) const;
    std::string languageFile(std::string_view productName) const;
    void writeTextFile(const std::string& path, const std::string& text) const;
    std::string textOfFile(const std::string& path) const;

    ScriptedDsm dsm;
    std::unique_ptr<AppDelegate> controller;
    std::vector<Alert> alerts;
    std::vector<std::string> revealed;
    const testing_support::TestFolder testFolder;
    const std::string& folder = testFolder.path();
    std::string bundle; // the application's
    std::string home;   // the user's; his name is "ada"
    int selectionsShown = 0;
    int scansEnded = 0;

private:
    void answerSelectionWindow();

    std::function<void(AppDelegate&)> choose_;
    std::string bundleBefore_;
};

} // namespace paperline::test

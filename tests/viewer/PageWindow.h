// A controller with the widgets of page list and page view, for tests of their operations.
#pragma once

#include "ViewerTestFiles.h"
#include "controller/AppDelegate.h"
#include "tests/support/TraceRecording.h"
#include "viewer/ImageView.h"

#include <QScrollArea>
#include <QSplitter>
#include <QTableView>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace paperline {

class PageWindow : public ::testing::Test {
protected:
    PageWindow();
    ~PageWindow() override;

    // Saves a page file into the folder and adds its path to the controller's list.
    std::string addPicture(const std::string& name, const QImage& picture = quarters(60, 90));
    std::string addPath(const std::string& path);

    std::vector<std::string> captions() const;
    QImage grabView();
    // The labels and texts traced since startTrace, without times: "In GetImageFromImageFolder",
    // "GetImageFromImageFolder : imageFilePath count = 1", "FitlSizeImage.x 0".
    void startTrace();
    std::vector<std::string> traced() const;
    // The same, but only the texts traced under one operation's name.
    std::vector<std::string> tracedTexts(const std::string& operation) const;

    TemporaryFolder folder_;
    TemporaryFolder scratch_;
    AppDelegate controller_;
    QSplitter window_;
    std::vector<std::string> alerts_;
    std::optional<testing_support::TraceRecording> trace_;
};

} // namespace paperline

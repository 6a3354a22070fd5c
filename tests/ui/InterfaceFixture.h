// A controller with its real windows, in the language and brand that a test asks for, without a
// scanner. Alerts and the desktop are recorded.
#pragma once

#include "base/BrandProfile.h"
#include "controller/AppDelegate.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/MainLoop.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "ui/MainWindow.h"
#include "ui/SaveFolderTextField.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QTableView>
#include <QToolBar>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace paperline {

class InterfaceFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Constructs the controller; the defaults are those of a launch.
    AppDelegate& start(uint32_t brand = 7, int32_t language = 0);
    MainWindow& window() { return *qobject_cast<MainWindow*>(controller->paperlineWindow); }
    // The File-menu entries, "-" for a separator.
    static QStringList titles(const QMenu* menu);
    // A bundle whose text for each key is the key in angle brackets, so that a title shows its key.
    static std::shared_ptr<const LanguageBundle> echoingBundle();
    // Writes a language folder with one text below `resources`.
    static void writeLanguage(const std::string& resources,
                              const std::string& folder,
                              const std::string& strings);

    std::string folder; // of this test
    std::unique_ptr<AppDelegate> controller;
    std::vector<Alert> alerts;
};

} // namespace paperline

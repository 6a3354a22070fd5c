// The main window: toolbar, menus, page list beside page view, status line. It holds no behaviour
// of its own beyond layout; the controller drives it through the outlets and listens to its
// signals.
#pragma once

#include "base/LanguageBundle.h"

#include <QMainWindow>

#include <functional>
#include <memory>
#include <string>
#include <utility>

class QLabel;

namespace paperline {

class EmptyState;
struct InterfaceOutlets;

// Layout of the window as designed, in points.
inline constexpr int designWidth = 1024;
inline constexpr int designHeight = 678;
inline constexpr int dividerPosition = 215;
inline constexpr int thumbnailColumnWidth = 275; // room of the list; the divider cuts it

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // Fills every outlet of the main window. The page view becomes the window's.
    MainWindow(InterfaceOutlets& outlets, QWidget* pageView, const std::string& resources);

    // Texts that have no outlet of their own: names for screen readers, tooltips, the empty page
    // area.
    void retranslate(const std::shared_ptr<const LanguageBundle>& bundle);

    // With the page list: the list up to the divider, the page view beside it. Without: the page
    // view alone.
    void layOutPanes(bool withPageList);

    void setApplicationMenuTitle(const QString& productName);
    void setEmptyStateShown(bool shown);
    void setStatus(const QString& text);
    void setPageCount(const QString& text);

    // While the guard says no, a close is announced, but the window stays.
    void setCloseGuard(std::function<bool()> mayCloseNow) { mayCloseNow_ = std::move(mayCloseNow); }

signals:
    void closing(); // at every close that the user or the system asks for

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void makePanes(QWidget* pageView);
    void makeStatusLine();
    void orderTabs();

    InterfaceOutlets& outlets_;
    EmptyState* emptyState_ = nullptr;
    QLabel* status_ = nullptr;
    QLabel* pageCount_ = nullptr;
    std::function<bool()> mayCloseNow_;
};

} // namespace paperline

// The main window: toolbar, menus, page list beside page view, status line. Its behaviour is the
// controller's.
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

// In points.
inline constexpr int designWidth = 1024;
inline constexpr int designHeight = 678;
inline constexpr int dividerPosition = 215;
inline constexpr int thumbnailColumnWidth = 275; // at most

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // Fills the outlets of the main window and takes over the page view.
    MainWindow(InterfaceOutlets& outlets, QWidget* pageView, const std::string& resources);

    // Names for screen readers, tooltips and the texts of the empty page area.
    void retranslate(const std::shared_ptr<const LanguageBundle>& bundle);

    void layOutPanes(bool withPageList);

    void setApplicationMenuTitle(const QString& productName);
    void setEmptyStateShown(bool shown);
    void setStatus(const QString& text);
    void setPageCount(const QString& text);

    // While the guard answers false, closing() is sent, but the window stays open.
    void setCloseGuard(std::function<bool()> mayCloseNow) { mayCloseNow_ = std::move(mayCloseNow); }

signals:
    void closing();

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

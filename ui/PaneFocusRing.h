// Shows which of the window's panes has the focus, once somebody walks through it with Tab.
#pragma once

#include <QWidget>

namespace paperline {

class PaneFocusRing : public QWidget {
    Q_OBJECT

public:
    // Lies over `pane`, which owns it, and takes no clicks.
    explicit PaneFocusRing(QWidget* pane);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace paperline

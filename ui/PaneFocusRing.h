// Shows which of the window's panes has the focus, once somebody walks through it with Tab.
#pragma once

#include <QWidget>

class QAbstractScrollArea;

namespace paperline {

class PaneFocusRing : public QWidget {
    Q_OBJECT

public:
    // Lies over what `pane` shows, beside its scrollers, and takes no clicks. The pane owns it.
    explicit PaneFocusRing(QAbstractScrollArea* pane);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QAbstractScrollArea* pane_;
};

} // namespace paperline

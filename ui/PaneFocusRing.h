// Shows which pane of the window got the focus by the Tab key.
#pragma once

#include <QWidget>

class QAbstractScrollArea;

namespace paperline {

class PaneFocusRing : public QWidget {
    Q_OBJECT

public:
    // Lies over the viewport of `pane`, which owns it, and takes no clicks.
    explicit PaneFocusRing(QAbstractScrollArea* pane);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QAbstractScrollArea* pane_;
};

} // namespace paperline

#include "ui/PaneFocusRing.h"

#include "viewer/Colours.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QFocusEvent>
#include <QPainter>

namespace paperline {
namespace {

bool isFromTabKey(const QEvent* event) {
    const Qt::FocusReason reason = static_cast<const QFocusEvent*>(event)->reason();
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
}

} // namespace

PaneFocusRing::PaneFocusRing(QAbstractScrollArea* pane) : QWidget(pane), pane_(pane) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    setGeometry(pane->viewport()->geometry());
    pane->installEventFilter(this);
    pane->viewport()->installEventFilter(this);
}

bool PaneFocusRing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        setGeometry(pane_->viewport()->geometry());
    if (watched == pane_ && event->type() == QEvent::FocusOut)
        hide();
    if (watched == pane_ && event->type() == QEvent::FocusIn && isFromTabKey(event)) {
        raise();
        show();
    }
    return QWidget::eventFilter(watched, event);
}

// A dark line and a white one: on any content one of them can be seen.
void PaneFocusRing::paintEvent(QPaintEvent*) {
    const QColor dark = readableBackground(palette().color(QPalette::Highlight), Qt::lightGray);
    QPainter painter(this);
    painter.setPen(QPen(dark, 2));
    painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    painter.setPen(QPen(Qt::white, 1));
    painter.drawRect(QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5));
}

} // namespace paperline

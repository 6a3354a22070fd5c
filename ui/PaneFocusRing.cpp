#include "ui/PaneFocusRing.h"

#include "ui/Colours.h"

#include <QEvent>
#include <QFocusEvent>
#include <QPainter>

namespace paperline {
namespace {

bool walkedWithKeys(const QEvent* event) {
    const Qt::FocusReason reason = static_cast<const QFocusEvent*>(event)->reason();
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
}

} // namespace

PaneFocusRing::PaneFocusRing(QWidget* pane) : QWidget(pane) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    resize(pane->size());
    pane->installEventFilter(this);
}

bool PaneFocusRing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize)
        resize(static_cast<QWidget*>(watched)->size());
    if (event->type() == QEvent::FocusOut)
        hide();
    if (event->type() == QEvent::FocusIn && walkedWithKeys(event)) {
        raise();
        show();
    }
    return QWidget::eventFilter(watched, event);
}

// A line that is dark enough for the grey around a page, and a white one: whatever the pane shows,
// one of them can be seen.
void PaneFocusRing::paintEvent(QPaintEvent*) {
    const QColor dark = readableBackground(palette().color(QPalette::Highlight), Qt::lightGray);
    QPainter painter(this);
    painter.setPen(QPen(dark, 2));
    painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    painter.setPen(QPen(Qt::white, 1));
    painter.drawRect(QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5));
}

} // namespace paperline

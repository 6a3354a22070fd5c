#include "ui/EmptyState.h"

#include <QEvent>
#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace paperline {
namespace {

constexpr int pictureSide = 96;
constexpr int widestHint = 440;
constexpr int narrowestHint = 160;
constexpr double titleScale = 1.4;

} // namespace

EmptyState::EmptyState(const QIcon& picture, QWidget* covered)
    : QWidget(covered), icon_(picture), picture_(new QLabel(this)), title_(new QLabel(this)),
      hint_(new QLabel(this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window);
    picture_->setAlignment(Qt::AlignCenter);
    title_->setAlignment(Qt::AlignCenter);
    hint_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    hint_->setWordWrap(true);

    auto* column = new QVBoxLayout(this);
    column->setSpacing(8);
    column->addStretch(2);
    column->addWidget(picture_, 0, Qt::AlignHCenter);
    column->addSpacing(8);
    column->addWidget(title_, 0, Qt::AlignHCenter);
    column->addWidget(hint_, 0, Qt::AlignHCenter);
    column->addStretch(3);

    fitFonts();
    showPicture();
    covered->installEventFilter(this);
    resize(covered->size());
}

void EmptyState::setTexts(const QString& title, const QString& hint) {
    title_->setText(title);
    hint_->setText(hint);
    fitHint();
    setAccessibleName(title);
    setAccessibleDescription(hint);
}

bool EmptyState::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize)
        resize(static_cast<QWidget*>(watched)->size());
    return QWidget::eventFilter(watched, event);
}

void EmptyState::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        showPicture();
    if (event->type() == QEvent::FontChange)
        fitFonts();
    QWidget::changeEvent(event);
}

// The narrowest width with as few lines as the widest needs makes lines of about the same length. A
// layout does not ask a centred label for its wrapped height, so the height is set too.
void EmptyState::fitHint() {
    const int height = std::max(0, hint_->heightForWidth(widestHint));
    int tooNarrow = narrowestHint - 1;
    int width = widestHint;
    while (width - tooNarrow > 1) {
        const int middle = (tooNarrow + width) / 2;
        if (hint_->heightForWidth(middle) <= height)
            width = middle;
        else
            tooNarrow = middle;
    }
    hint_->setFixedSize(width, height);
}

void EmptyState::fitFonts() {
    QFont large = font();
    if (large.pointSizeF() > 0)
        large.setPointSizeF(large.pointSizeF() * titleScale);
    large.setWeight(QFont::DemiBold);
    title_->setFont(large);
    fitHint();
}

void EmptyState::showPicture() {
    picture_->setPixmap(icon_.pixmap(QSize(pictureSide, pictureSide), devicePixelRatioF()));
}

} // namespace paperline

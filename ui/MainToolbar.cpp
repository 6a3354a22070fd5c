#include "ui/MainToolbar.h"

#include "controller/InterfaceOutlets.h"
#include "ui/SaveFolderTextField.h"
#include "ui/ThemedIcon.h"
#include "viewer/Colours.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>
#include <QToolBar>
#include <QToolButton>
#include <QWidgetAction>

namespace paperline {
namespace {

constexpr int iconSide = 24;
constexpr int toolbarMargin = 6;
constexpr int buttonSpace = 4;
constexpr int groupSpace = 6;
constexpr int controlHeight = 32;
constexpr int narrowestFolderField = 160;

// A focus ring that can be seen on light and dark backgrounds, unlike the style's own.
class FocusRing : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element,
                       const QStyleOption* option,
                       QPainter* painter,
                       const QWidget* widget) const override {
        if (element != PE_FrameFocusRect) {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            return;
        }
        constexpr double line = 2;
        constexpr double corner = 4;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(readableBackground(option->palette.color(QPalette::Highlight),
                                                option->palette.color(QPalette::Window)),
                             line));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(
            QRectF(widget->rect()).adjusted(line, line, -line, -line), corner, corner);
        painter->restore();
    }
};

QAction* addButton(QToolBar* toolbar,
                   const std::string& picture,
                   Qt::ToolButtonStyle style,
                   QPalette::ColorRole role = QPalette::ButtonText) {
    QAction* action = toolbar->addAction(themedIcon(picture, role), QString());
    if (auto* button = qobject_cast<QToolButton*>(toolbar->widgetForAction(action))) {
        button->setToolButtonStyle(style);
        button->setFocusPolicy(Qt::TabFocus);
        button->setMinimumHeight(controlHeight);
        auto* ring = new FocusRing;
        ring->setParent(button);
        button->setStyle(ring);
    }
    return action;
}

// The control with space on both sides.
QAction* addControl(QToolBar* toolbar, QWidget* control, QSizePolicy::Policy horizontal) {
    auto* frame = new QWidget(toolbar);
    auto* row = new QHBoxLayout(frame);
    row->setContentsMargins(groupSpace, 0, groupSpace, 0);
    row->addWidget(control);
    control->setMinimumHeight(controlHeight);
    frame->setSizePolicy(horizontal, QSizePolicy::Preferred);
    auto* action = new QWidgetAction(toolbar);
    action->setDefaultWidget(frame);
    toolbar->addAction(action);
    return action;
}

// Screen readers take a combo box's name from its label; here the label is hidden.
void labelUnseen(QWidget* control) {
    auto* label = new QLabel(control->parentWidget());
    label->hide();
    label->setBuddy(control);
}

QString rgb(const QColor& colour) {
    return colour.name(QColor::HexRgb);
}

} // namespace

QWidget* toolbarButton(const QToolBar* toolbar, QAction* action) {
    return toolbar->widgetForAction(action);
}

void makeMainToolbar(QMainWindow& window, InterfaceOutlets& outlets, const std::string& resources) {
    auto* toolbar = new QToolBar(&window);
    toolbar->setObjectName("paperlineToolbar");
    toolbar->setMovable(false);
    toolbar->setFloatable(false);
    toolbar->setContextMenuPolicy(Qt::PreventContextMenu);
    toolbar->setIconSize(QSize(iconSide, iconSide));
    toolbar->layout()->setContentsMargins(
        toolbarMargin, toolbarMargin, toolbarMargin, toolbarMargin);
    toolbar->layout()->setSpacing(buttonSpace);
    outlets.paperlineToolbar = toolbar;

    const auto button = [&](const char* picture, Qt::ToolButtonStyle style) {
        return addButton(toolbar, resources + picture, style);
    };
    outlets.paperlineToolbar_Setup = button("/Setup.png", Qt::ToolButtonTextBesideIcon);
    outlets.paperlineToolbar_Scan = addButton(
        toolbar, resources + "/Scan.png", Qt::ToolButtonTextBesideIcon, QPalette::HighlightedText);
    outlets.paperlineToolbar_FileFormatsCombox = new QComboBox;
    outlets.paperlineToolbar_FileFormatsCombox->setFocusPolicy(Qt::StrongFocus);
    addControl(toolbar, outlets.paperlineToolbar_FileFormatsCombox, QSizePolicy::Fixed);
    labelUnseen(outlets.paperlineToolbar_FileFormatsCombox);
    outlets.paperlineToolbar_FileFormat = button("/Floppy.png", Qt::ToolButtonIconOnly);
    outlets.paperlineToolbar_FolderSelect = button("/Folder.png", Qt::ToolButtonTextBesideIcon);
    outlets.currentSaveFolder = new SaveFolderTextField;
    outlets.currentSaveFolder->setMinimumWidth(narrowestFolderField);
    outlets.paperlineToolbar_CurrentForder =
        addControl(toolbar, outlets.currentSaveFolder, QSizePolicy::Expanding);
    outlets.paperlineToolbar_OpenDlg = button("/OpenFolder.png", Qt::ToolButtonIconOnly);
    outlets.paperlineToolbar_FitPage = button("/FitPage.png", Qt::ToolButtonIconOnly);
    outlets.paperlineToolbar_FitPage->setShortcut(Qt::CTRL | Qt::Key_0);
    outlets.paperlineToolbar_ActualPage = button("/ActualPage.png", Qt::ToolButtonIconOnly);
    outlets.paperlineToolbar_ActualPage->setShortcut(Qt::CTRL | Qt::Key_1);

    for (QAction* mode : {outlets.paperlineToolbar_FitPage, outlets.paperlineToolbar_ActualPage})
        mode->setCheckable(true);
    outlets.paperlineToolbar_FitPage->setChecked(true);

    window.addToolBar(Qt::TopToolBarArea, toolbar);
    evenToolbarEnds(toolbar);
    styleScanButton(outlets);
}

void evenToolbarEnds(QToolBar* toolbar) {
    const bool fromLeft = toolbar->layoutDirection() == Qt::LeftToRight;
    toolbar->setContentsMargins(fromLeft ? buttonSpace : 0, 0, fromLeft ? 0 : buttonSpace, 0);
}

QLabel* unseenLabelOf(const QWidget* control) {
    return control->parentWidget()->findChild<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
}

void styleScanButton(const InterfaceOutlets& outlets) {
    QWidget* button = toolbarButton(outlets.paperlineToolbar, outlets.paperlineToolbar_Scan);
    if (button == nullptr)
        return;
    const QPalette colours = outlets.paperlineToolbar->palette();
    const QColor text = colours.color(QPalette::HighlightedText);
    const QColor ground = readableBackground(colours.color(QPalette::Highlight), text);
    const QColor pressed = readableBackground(ground.darker(115), text);
    const QColor disabledText = colours.color(QPalette::Disabled, QPalette::WindowText);
    // The style reserves room after the text already.
    constexpr int besideIcon = 9;
    constexpr int besideText = 3;
    const bool fromLeft = button->layoutDirection() == Qt::LeftToRight;
    button->setStyleSheet(
        QStringLiteral(
            "QToolButton { background: %1; color: %2; border: 2px solid %1; border-radius: 6px;"
            " padding: 0px %6px 0px %7px; }"
            "QToolButton:hover, QToolButton:pressed { background: %3; border-color: %3; }"
            "QToolButton:focus { border-color: %8; }"
            "QToolButton:disabled { background: transparent; color: %4; border-color: %5; }")
            .arg(rgb(ground),
                 rgb(text),
                 rgb(pressed),
                 rgb(disabledText),
                 rgb(colours.color(QPalette::Mid)))
            .arg(fromLeft ? besideText : besideIcon)
            .arg(fromLeft ? besideIcon : besideText)
            .arg(rgb(colours.color(QPalette::WindowText))));
}

} // namespace paperline

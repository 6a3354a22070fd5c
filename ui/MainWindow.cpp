#include "ui/MainWindow.h"

#include "controller/InterfaceOutlets.h"
#include "ui/EmptyState.h"
#include "ui/MainMenus.h"
#include "ui/MainToolbar.h"
#include "ui/PaneFocusRing.h"
#include "ui/SaveFolderTextField.h"
#include "ui/ThemedIcon.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QToolBar>

namespace paperline {
namespace {

constexpr int narrowestPageList = 200; // a thumbnail and a scroll bar

// Rows without the style's selection: the cells draw their own.
class PlainRows : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element,
                       const QStyleOption* option,
                       QPainter* painter,
                       const QWidget* widget) const override {
        if (element != PE_PanelItemViewRow)
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
};

QTableView* makePageList() {
    auto* table = new QTableView;
    table->setObjectName("pageList");
    table->horizontalHeader()->hide();
    table->verticalHeader()->hide();
    table->setShowGrid(false);
    table->setFrameShape(QFrame::NoFrame);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // viewer/CellGeometry.h is for one direction only.
    table->setLayoutDirection(Qt::LeftToRight);
    table->setTabKeyNavigation(false); // Tab leaves the list
    table->setMinimumWidth(narrowestPageList);
    auto* rows = new PlainRows;
    rows->setParent(table);
    table->setStyle(rows);
    table->setMaximumWidth(thumbnailColumnWidth);
    return table;
}

QScrollArea* makePageScroller(QWidget* pageView) {
    auto* scroller = new QScrollArea;
    scroller->setObjectName("pageScroller");
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Pages are shown from their top left corner in every language.
    scroller->setLayoutDirection(Qt::LeftToRight);
    scroller->setWidget(pageView);
    return scroller;
}

// Draws a text that is too long with an ellipsis in its middle.
class StatusLabel : public QLabel {
protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QRect place = contentsRect();
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, place.width());
        const auto flags =
            static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment()));
        style()->drawItemText(
            &painter, place, flags, palette(), isEnabled(), shown, foregroundRole());
    }
};

// Names the widget for screen readers.
void describe(QWidget* widget, const QString& name, const QString& help) {
    if (widget == nullptr)
        return;
    widget->setAccessibleName(name);
    widget->setAccessibleDescription(help);
}

} // namespace

MainWindow::MainWindow(InterfaceOutlets& outlets, QWidget* pageView, const std::string& resources)
    : outlets_(outlets) {
    setObjectName("paperlineWindow");
    outlets.paperlineWindow = this;
    outlets._window = this;
    outlets.mWindow = this;
    outlets._imageViewMain = new QLabel(this); // never shown, like the next
    outlets._imageViewMain->hide();
    outlets._textFieldMain = new QLineEdit(this);
    outlets._textFieldMain->hide();
    makeMainMenus(*this, outlets);
    makeMainToolbar(*this, outlets, resources);
    makePanes(pageView);
    makeStatusLine();
    emptyState_ =
        new EmptyState(themedIcon(resources + "/EmptyPages.png", QPalette::PlaceholderText),
                       outlets.showImageScrollView);
    resize(designWidth, designHeight);
    layOutPanes(true);
    orderTabs();
}

void MainWindow::makePanes(QWidget* pageView) {
    outlets_._tableViewMain = makePageList();
    outlets_.thumbnailView = outlets_._tableViewMain;
    outlets_.showImageScrollView = makePageScroller(pageView);
    new PaneFocusRing(outlets_._tableViewMain);
    new PaneFocusRing(outlets_.showImageScrollView);

    auto* split = new QSplitter(Qt::Horizontal);
    split->setObjectName("paperlineSplitView");
    split->setHandleWidth(1);
    split->setChildrenCollapsible(false);
    split->addWidget(outlets_._tableViewMain);
    split->addWidget(outlets_.showImageScrollView);
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    split->handle(1)->setAutoFillBackground(true); // a line of one pixel
    split->handle(1)->setBackgroundRole(QPalette::Mid);
    outlets_.paperlineSplitView = split;
    setCentralWidget(split);
}

void MainWindow::makeStatusLine() {
    status_ = new StatusLabel;
    status_->setContentsMargins(8, 2, 8, 2);
    status_->setTextFormat(Qt::PlainText);
    pageCount_ = new QLabel;
    pageCount_->setContentsMargins(8, 2, 8, 2);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(status_, 1);
    statusBar()->addPermanentWidget(pageCount_);
}

void MainWindow::orderTabs() {
    const auto button = [this](QAction* action) {
        return toolbarButton(outlets_.paperlineToolbar, action);
    };
    const QList<QWidget*> order{button(outlets_.paperlineToolbar_Setup),
                                button(outlets_.paperlineToolbar_Scan),
                                outlets_.paperlineToolbar_FileFormatsCombox,
                                button(outlets_.paperlineToolbar_FileFormat),
                                button(outlets_.paperlineToolbar_FolderSelect),
                                outlets_.currentSaveFolder,
                                button(outlets_.paperlineToolbar_OpenDlg),
                                button(outlets_.paperlineToolbar_FitPage),
                                button(outlets_.paperlineToolbar_ActualPage),
                                outlets_._tableViewMain,
                                outlets_.showImageScrollView};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    outlets_._tableViewMain->setFocus();
}

void MainWindow::layOutPanes(bool withPageList) {
    QSplitter* split = outlets_.paperlineSplitView;
    outlets_.thumbnailView->setVisible(withPageList);
    if (!withPageList)
        return;
    const int available = split->width() - split->handleWidth();
    split->setSizes({dividerPosition, qMax(0, available - dividerPosition)});
}

void MainWindow::retranslate(const std::shared_ptr<const LanguageBundle>& bundle) {
    const auto text = [&bundle](const char* key) {
        return QString::fromStdString(localizedString(bundle, key));
    };
    const auto describeButton = [this](QAction* item, const QString& name, const QString& help) {
        describe(toolbarButton(outlets_.paperlineToolbar, item), name, help);
    };
    describeButton(outlets_.paperlineToolbar_Setup, text("Setup"), text("SetupHelp"));
    describeButton(outlets_.paperlineToolbar_Scan, text("Scan"), text("ScanHelp"));
    describeButton(outlets_.paperlineToolbar_FileFormat, text("Save"), text("SaveHelp"));
    describeButton(
        outlets_.paperlineToolbar_FolderSelect, text("FileFormat"), text("FolderButtonHelp"));
    describeButton(outlets_.paperlineToolbar_OpenDlg, text("OpenFolder"), text("OpenFolderHelp"));
    describeButton(outlets_.paperlineToolbar_FitPage, text("FitPage"), text("FitPageHelp"));
    describeButton(
        outlets_.paperlineToolbar_ActualPage, text("ActualPage"), text("ActualPageHelp"));
    outlets_.paperlineToolbar_OpenDlg->setText(text("OpenFolder"));
    outlets_.paperlineToolbar_OpenDlg->setToolTip(text("OpenFolderHelp"));
    outlets_.paperlineToolbar_Setup->setToolTip(text("SetupHelp"));
    outlets_.paperlineToolbar_Scan->setToolTip(text("ScanHelp"));
    outlets_.paperlineToolbar_FolderSelect->setToolTip(text("FolderButtonHelp"));

    QComboBox* formats = outlets_.paperlineToolbar_FileFormatsCombox;
    describe(formats, text("FormatListName"), text("FormatListHelp"));
    formats->setToolTip(text("FormatListHelp"));
    unseenLabelOf(formats)->setText(text("FormatListName"));
    describe(outlets_.currentSaveFolder, text("SaveFolderName"), text("SaveFolderHelp"));
    outlets_.currentSaveFolder->setToolTip(text("SaveFolderHelp"));
    describe(outlets_.paperlineToolbar, text("ToolbarName"), {});
    describe(outlets_._tableViewMain, text("PageListName"), text("PageListHelp"));
    for (QWidget* pane : {static_cast<QWidget*>(outlets_.showImageScrollView),
                          outlets_.showImageScrollView->widget()})
        describe(pane, text("PageViewName"), text("PageViewHelp"));
    emptyState_->setTexts(text("NoPagesTitle"), text("NoPagesHint"));
    // Screen readers take the label's text as its name.
    status_->setAccessibleDescription(text("StatusName"));
}

void MainWindow::setApplicationMenuTitle(const QString& productName) {
    menuBar()->findChild<QMenu*>("applicationMenu")->setTitle(productName);
}

void MainWindow::setEmptyStateShown(bool shown) {
    emptyState_->setVisible(shown);
}

void MainWindow::setStatus(const QString& text) {
    status_->setText(text);
}

void MainWindow::setPageCount(const QString& text) {
    pageCount_->setText(text);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->setAccepted(!mayCloseNow_ || mayCloseNow_());
    emit closing();
}

void MainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange && outlets_.paperlineToolbar_Scan != nullptr)
        styleScanButton(outlets_);
    if (event->type() == QEvent::LayoutDirectionChange &&
        outlets_.paperlineToolbar_Scan != nullptr) {
        evenToolbarEnds(outlets_.paperlineToolbar);
        styleScanButton(outlets_);
        // Makes the panes change sides.
        outlets_.paperlineSplitView->setSizes(outlets_.paperlineSplitView->sizes());
    }
    QMainWindow::changeEvent(event);
}

} // namespace paperline

#include "ui/SelectSourceWindow.h"

#include "controller/InterfaceOutlets.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QProxyStyle>
#include <QPushButton>
#include <QStringListModel>
#include <QTableView>
#include <QVBoxLayout>

namespace paperline {
namespace {

constexpr int windowWidth = 440;
constexpr int windowHeight = 320;
constexpr int margin = 20;
constexpr int rowPadding = 12;
constexpr int besideNames = 8;

// Names; the tooltip has the whole of a name that is cut off.
class NameList : public QStringListModel {
public:
    using QStringListModel::QStringListModel;

    QVariant data(const QModelIndex& index, int role) const override {
        return QStringListModel::data(index, role == Qt::ToolTipRole ? Qt::DisplayRole : role);
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override {
        return QAbstractListModel::flags(index); // read-only
    }
};

// More space between the names and the list's edge.
class RoomyRows : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric,
                    const QStyleOption* option,
                    const QWidget* widget) const override {
        return metric == PM_FocusFrameHMargin ? besideNames
                                              : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

QTableView* makeNameTable(QWidget* parent, const QStringList& names) {
    auto* table = new QTableView(parent);
    table->setModel(new NameList(names, table));
    table->horizontalHeader()->hide();
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + rowPadding);
    table->setShowGrid(false);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setTabKeyNavigation(false);
    table->setTextElideMode(Qt::ElideMiddle);
    auto* rows = new RoomyRows;
    rows->setParent(table);
    table->setStyle(rows);
    return table;
}

} // namespace

SelectSourceWindow::SelectSourceWindow(InterfaceOutlets& outlets) : outlets_(outlets) {
    setObjectName("twainSelectSourceWindow");
    outlets.twainSelectSourceWindow = this;
    outlets.twainSelectSourceScannerType = new QLabel(this);
    outlets._tableViewSelectSource = makeNameTable(this, {});
    outlets._tableViewSelectSource->setObjectName("sourceList");
    outlets._tableViewTWAIN = makeNameTable(this, {"TWAIN"}); // never shown
    outlets._tableViewTWAIN->hide();
    outlets.twainSelectSourceScannerType->setBuddy(outlets._tableViewSelectSource);

    auto* buttons = new QDialogButtonBox(this);
    outlets.twainSelectSourceOKBtn = buttons->addButton(QDialogButtonBox::Ok);
    outlets.twainSelectSourceCancelBtn = buttons->addButton(QDialogButtonBox::Cancel);
    outlets.twainSelectSourceOKBtn->setDefault(true);
    for (QPushButton* button : {outlets.twainSelectSourceOKBtn, outlets.twainSelectSourceCancelBtn})
        button->setIcon({});
    connect(outlets._tableViewSelectSource,
            &QTableView::doubleClicked,
            outlets.twainSelectSourceOKBtn,
            &QPushButton::click);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(margin / 2);
    column->addWidget(outlets.twainSelectSourceScannerType);
    column->addWidget(outlets._tableViewSelectSource, 1);
    column->addSpacing(margin / 2);
    column->addWidget(buttons);
    resize(windowWidth, windowHeight);
    outlets._tableViewSelectSource->setFocus();
}

void SelectSourceWindow::reject() {
    outlets_.twainSelectSourceCancelBtn->click();
}

} // namespace paperline

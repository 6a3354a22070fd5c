#include "viewer/RowSelection.h"

#include "controller/AppDelegate.h"

#include <QItemSelectionModel>
#include <QTableView>

namespace paperline {

void reportRowSelection(AppDelegate& controller, QTableView* table) {
    QObject::connect(table->selectionModel(),
                     &QItemSelectionModel::selectionChanged,
                     &controller,
                     [&controller, table] {
                         const QModelIndexList rows = table->selectionModel()->selectedRows();
                         controller.tableViewSelectionDidChange(
                             table, rows.isEmpty() ? -1 : rows.constFirst().row());
                     });
}

} // namespace paperline

// Tells the controller which row of a table is selected.
#pragma once

class QTableView;

namespace paperline {

class AppDelegate;

// From now on every change, -1 for no row. The table has its model.
void reportRowSelection(AppDelegate& controller, QTableView* table);

} // namespace paperline

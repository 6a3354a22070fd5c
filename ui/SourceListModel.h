// Names in a one-column table, one a row: the data sources to choose among.
#pragma once

#include <QAbstractTableModel>
#include <QStringList>

namespace paperline {

class SourceListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    void setNames(const QStringList& names);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    QStringList names_;
};

} // namespace paperline

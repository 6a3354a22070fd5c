#include "ui/SourceListModel.h"

namespace paperline {

void SourceListModel::setNames(const QStringList& names) {
    beginResetModel();
    names_ = names;
    endResetModel();
}

int SourceListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(names_.size());
}

int SourceListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

QVariant SourceListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= names_.size())
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return names_.at(index.row());
    return {};
}

} // namespace paperline

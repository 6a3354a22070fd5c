#include "viewer/PageListModel.h"

#include <utility>

namespace paperline {

PageListModel::PageListModel(const std::vector<CellInfo>* rows,
                             std::function<uint32_t()> numberOfRows,
                             QObject* parent)
    : QAbstractTableModel(parent), rows_(rows), numberOfRows_(std::move(numberOfRows)) {}

int PageListModel::listedRows() const {
    const uint32_t answer = numberOfRows_();
    return answer <= rows_->size() && answer <= INT32_MAX ? static_cast<int>(answer) : 0;
}

void PageListModel::reload() {
    const int before = shownRows_;
    const int now = listedRows();
    if (now > before) {
        beginInsertRows({}, before, now - 1);
        shownRows_ = now;
        endInsertRows();
    } else if (now < before) {
        beginRemoveRows({}, now, before - 1);
        shownRows_ = now;
        endRemoveRows();
    }
    const int kept = now < before ? now : before;
    if (kept > 0)
        emit dataChanged(index(0, 0), index(kept - 1, 0));
}

int PageListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : shownRows_;
}

int PageListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

QVariant PageListModel::data(const QModelIndex& index, int role) const {
    const auto row = static_cast<size_t>(index.row());
    if (!index.isValid() || row >= rows_->size())
        return {};
    const CellInfo& info = (*rows_)[row];
    switch (role) {
    case CellInfoRole:
        return QVariant::fromValue(&info);
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return QString::fromStdString(info.subtitle);
    case Qt::ToolTipRole:
        return QString::fromStdString(info.imageFullPath);
    default:
        return {};
    }
}

} // namespace paperline

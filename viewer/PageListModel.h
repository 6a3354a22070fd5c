// The page list's rows for Qt's table view.
#pragma once

#include "controller/CellInfo.h"

#include <QAbstractTableModel>

#include <cstdint>
#include <functional>
#include <vector>

namespace paperline {

// Reads rows that its owner keeps; after changing them the owner calls reload(). Selection and
// scroll position stay as far as their rows do.
class PageListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Role { CellInfoRole = Qt::UserRole }; // const CellInfo*, valid until the rows change

    // `numberOfRows` answers how many of `rows` are listed. A number beyond them (an empty list
    // less one wraps to 4294967295) lists none.
    PageListModel(const std::vector<CellInfo>* rows,
                  std::function<uint32_t()> numberOfRows,
                  QObject* parent = nullptr);

    void reload();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    int listedRows() const;

    const std::vector<CellInfo>* rows_;
    std::function<uint32_t()> numberOfRows_;
    int shownRows_ = 0;
};

} // namespace paperline

Q_DECLARE_METATYPE(const paperline::CellInfo*)

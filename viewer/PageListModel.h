// The page list's rows for Qt's table view.
#pragma once

#include "controller/CellInfo.h"

#include <QAbstractTableModel>

#include <cstdint>
#include <functional>
#include <vector>

namespace paperline {

// Reads rows that its owner keeps. They are looked at only when reload() is called or a row is
// drawn, so the owner may change them at any time and reload afterwards. Selection and scroll
// position survive a reload as far as their rows do.
class PageListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Role { CellInfoRole = Qt::UserRole }; // const CellInfo*, valid until the rows change

    // `numberOfRows` answers how many of `rows` are listed; an answer beyond them, like the
    // 4294967295 of an empty list less one, lists none.
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

// The window that asks which data source to work with.
#pragma once

#include <QDialog>

namespace paperline {

struct InterfaceOutlets;

class SelectSourceWindow : public QDialog {
    Q_OBJECT

public:
    // Fills the outlets of the source selection. A double click on a row is OK; closing the window
    // is Cancel.
    explicit SelectSourceWindow(InterfaceOutlets& outlets);

protected:
    void reject() override;

private:
    InterfaceOutlets& outlets_;
};

} // namespace paperline

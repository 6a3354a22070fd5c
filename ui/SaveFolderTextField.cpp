#include "ui/SaveFolderTextField.h"

namespace paperline {

SaveFolderTextField::SaveFolderTextField(QWidget* parent) : QLineEdit(parent) {
    constexpr int besideText = 4;
    setTextMargins(besideText, 0, besideText, 0);
    connect(this, &QLineEdit::textEdited, this, &SaveFolderTextField::textDidChange);
    connect(this, &QLineEdit::editingFinished, this, &SaveFolderTextField::textDidEndEditing);
}

void SaveFolderTextField::setFolderText(const std::string& folder) {
    setText(QString::fromStdString(folder));
    setCursorPosition(0); // shows the start of a long path
}

} // namespace paperline

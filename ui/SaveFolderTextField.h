// The field that shows the save folder. Its text counts when a scan starts and when the program
// ends; editing, leaving the field and Enter change nothing by themselves.
#pragma once

#include <QLineEdit>

#include <string>

namespace paperline {

class SaveFolderTextField : public QLineEdit {
    Q_OBJECT

public:
    explicit SaveFolderTextField(QWidget* parent = nullptr);

    void textDidChange(const QString& text);
    bool textShouldEndEditing() const { return true; }
    void textDidEndEditing() {}

    std::string folderText() const { return text().toStdString(); }
    void setFolderText(const std::string& folder);
};

} // namespace paperline

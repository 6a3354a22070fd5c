// The field that shows the save folder. Its text is read when a scan starts and when the program
// ends; editing it changes nothing else.
#pragma once

#include <QLineEdit>

#include <string>

namespace paperline {

class SaveFolderTextField : public QLineEdit {
    Q_OBJECT

public:
    explicit SaveFolderTextField(QWidget* parent = nullptr);

    void textDidChange(const QString&) {}
    bool textShouldEndEditing() const { return true; }
    void textDidEndEditing() {}

    std::string folderText() const { return text().toStdString(); }
    void setFolderText(const std::string& folder);
};

} // namespace paperline

// The widgets that the controller drives; made by ui/MainWindow.cpp and ui/SelectSourceWindow.cpp.
#pragma once

class QAbstractScrollArea;
class QAction;
class QComboBox;
class QDialog;
class QLabel;
class QLineEdit;
class QMainWindow;
class QMenu;
class QPushButton;
class QScrollArea;
class QSplitter;
class QTableView;
class QToolBar;

namespace paperline {

class ImageView;
class SaveFolderTextField;

struct InterfaceOutlets {
    QMainWindow* _window = nullptr;
    QMainWindow* paperlineWindow = nullptr; // the main window
    QSplitter* paperlineSplitView = nullptr;
    QScrollArea* showImageScrollView = nullptr;
    QAbstractScrollArea* thumbnailView = nullptr;
    ImageView* mImageView = nullptr;
    QTableView* _tableViewMain = nullptr; // the page list
    QLabel* _imageViewMain = nullptr;
    QLineEdit* _textFieldMain = nullptr;
    QMainWindow* mWindow = nullptr;
    SaveFolderTextField* currentSaveFolder = nullptr;

    QToolBar* paperlineToolbar = nullptr;
    QAction* paperlineToolbar_Setup = nullptr;
    QAction* paperlineToolbar_Scan = nullptr;
    QAction* paperlineToolbar_OpenDlg = nullptr;
    QAction* paperlineToolbar_FileFormat = nullptr;
    QAction* paperlineToolbar_FolderSelect = nullptr;
    QAction* paperlineToolbar_FitPage = nullptr;
    QAction* paperlineToolbar_ActualPage = nullptr;
    QAction* paperlineToolbar_CurrentForder = nullptr;
    QComboBox* paperlineToolbar_FileFormatsCombox = nullptr;

    QAction* fileMenuItem = nullptr; // the File menu's item in the menu bar
    QAction* fileSave = nullptr;
    QAction* fileSetup = nullptr;
    QAction* fileScan = nullptr;
    QAction* fileQuit = nullptr;
    QAction* fileSelectLangage = nullptr;
    QAction* windowMini = nullptr;
    QAction* systemAbout = nullptr;
    QAction* systemHideCPL = nullptr;
    QAction* systemHideOthers = nullptr;
    QAction* systemShowAll = nullptr;
    QAction* systemQuitCPL = nullptr;
    QMenu* fileMenuLanguage = nullptr; // the Options menu
    QMenu* fileMenuSave = nullptr;     // the File menu
    QMenu* fileNumeWindow = nullptr;   // the Window menu
    QAction* subMenuItemLanguage = nullptr;
    QAction* subMenuItemFileOption = nullptr;

    QDialog* twainSelectSourceWindow = nullptr;
    QTableView* _tableViewSelectSource = nullptr;
    QTableView* _tableViewTWAIN = nullptr;
    QLabel* twainSelectSourceScannerType = nullptr;
    QPushButton* twainSelectSourceOKBtn = nullptr;
    QPushButton* twainSelectSourceCancelBtn = nullptr;
};

} // namespace paperline

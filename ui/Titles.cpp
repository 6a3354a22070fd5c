// Titles of the toolbar and the menus in the current language.
#include "controller/AppDelegate.h"

#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "ui/MainWindow.h"
#include "ui/MenuText.h"

#include <QAction>
#include <QMenu>

namespace paperline {
namespace {

void setLabel(QAction* item, const std::string& text) {
    if (item != nullptr)
        item->setText(QString::fromStdString(text));
}

void setTip(QAction* item, const std::string& text) {
    if (item == nullptr)
        return;
    // The button shows no text, but screen readers read it.
    item->setText(QString::fromStdString(text));
    item->setToolTip(QString::fromStdString(text));
}

QAction* menuActionOf(const QMenu* menu) {
    return menu != nullptr ? menu->menuAction() : nullptr;
}

} // namespace

void AppDelegate::SetToolbarItemAndMenuUI(const std::shared_ptr<const LanguageBundle>& bundle) {
    TraceScope trace("SetToolbarItemAndMenuUI");
    const BrandProfile& brand = brandProfile(gBrandNumber);
    setLabel(paperlineToolbar_Setup, localizedString(bundle, "Setup"));
    setLabel(paperlineToolbar_Scan, localizedString(bundle, "Scan"));
    setLabel(paperlineToolbar_FolderSelect, localizedString(bundle, "FileFormat"));

    MnemonicChooser menuBar;
    menuBar.setTitle(menuActionOf(fileMenuSave), localizedString(bundle, "File"));
    menuBar.setTitle(menuActionOf(fileMenuLanguage), localizedString(bundle, "Options"));
    menuBar.setTitle(menuActionOf(fileNumeWindow), localizedString(bundle, "Window"));

    MnemonicChooser fileMenu;
    if (brand.hasSaveCommand)
        fileMenu.setTitle(fileSave, localizedString(bundle, "Save"));
    fileMenu.setTitle(fileSetup, localizedString(bundle, "Setup"));
    fileMenu.setTitle(fileScan, localizedString(bundle, "Scan"));
    fileMenu.setTitle(fileQuit, localizedString(bundle, "Quit"));

    MnemonicChooser().setTitle(windowMini, localizedString(bundle, "Minimize"));

    MnemonicChooser applicationMenu;
    applicationMenu.setTitle(systemAbout, localizedString(bundle, brand.aboutKey));
    applicationMenu.setTitle(systemHideCPL, localizedString(bundle, brand.hideKey));
    applicationMenu.setTitle(systemHideOthers, localizedString(bundle, "HideOthers"));
    applicationMenu.setTitle(systemShowAll, localizedString(bundle, "ShowAll"));
    applicationMenu.setTitle(systemQuitCPL, localizedString(bundle, brand.quitKey));

    if (auto* window = qobject_cast<MainWindow*>(paperlineWindow))
        window->retranslate(bundle);
    showIdleStatus();
}

void AppDelegate::SetToolbarItemTip(const std::shared_ptr<const LanguageBundle>& bundle) {
    TraceScope trace("SetToolbarItemTip");
    setTip(paperlineToolbar_FitPage, localizedString(bundle, "FitPage"));
    setTip(paperlineToolbar_ActualPage, localizedString(bundle, "ActualPage"));
    if (brandProfile(gBrandNumber).hasSaveCommand)
        setTip(paperlineToolbar_FileFormat, localizedString(bundle, "Save"));
}

} // namespace paperline

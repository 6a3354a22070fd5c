// Commands of the save folder, and the "Others" options.
#include "controller/AppDelegate.h"

#include "base/CvOutputLog.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "ui/MenuText.h"
#include "ui/SaveFolderText.h"
#include "ui/SaveFolderTextField.h"

#include <QAction>
#include <QMenu>

#include <array>
#include <optional>

namespace paperline {
namespace {

constexpr std::array otherOptionKeys{"ShowInFinder"};
constexpr qsizetype otherOptionsItem = 1; // of the Options menu

// The folder itself, or the nearest one above it that exists.
std::string nearestFolder(std::string path) {
    while (!path.empty() && !folderExists(path)) {
        std::string above = folderOfPath(path);
        if (above == path)
            return {};
        path = std::move(above);
    }
    return path;
}

} // namespace

void AppDelegate::toolBarItemFolderSelect(QObject*) {
    TraceScope trace("toolBarItemFolderSelect");
    if (currentSaveFolder == nullptr)
        return;
    const std::string current =
        absoluteFolderText(currentSaveFolder->folderText(), host().homeFolder());
    const bool nameComesFromField = SelectFolderAutoDetectFlag != 0;
    if (nameComesFromField)
        saveImageName = nameToCarryOver(current);
    if (!desktop().chooseFolder)
        return;
    const DelayedMessagesHold hold;
    const std::optional<std::string> chosen =
        desktop().chooseFolder(localizedString(mlangBundle, "ChooseFolderTitle"),
                               nearestFolder(folderOfPages(current, nameComesFromField)));
    if (!chosen)
        return;
    profileFolderName = chosenFolderText(*chosen, saveImageName, nameComesFromField);
    currentSaveFolder->setFolderText(profileFolderName);
}

void AppDelegate::openSaveFolder(QObject*) {
    TraceScope trace("openSaveFolder");
    const std::string text =
        currentSaveFolder != nullptr ? currentSaveFolder->folderText() : profileFolderName;
    const std::string folder = nearestFolder(folderOfPages(
        absoluteFolderText(text, host().homeFolder()), SelectFolderAutoDetectFlag != 0));
    if (!folder.empty() && desktop().openFolder)
        desktop().openFolder(folder);
}

void AppDelegate::addOtherOptionsItemtoMenu(const std::shared_ptr<const LanguageBundle>& bundle) {
    TraceScope trace("addOtherOptionsItemtoMenu");
    if (fileMenuLanguage == nullptr)
        return;
    auto* submenu = new QMenu(fileMenuLanguage);
    subMenuItemFileOption = submenu->menuAction();
    MnemonicChooser(fileMenuLanguage->actions())
        .setTitle(subMenuItemFileOption, localizedString(bundle, "Others"));
    MnemonicChooser mnemonics;
    for (const char* key : otherOptionKeys) {
        QAction* item = submenu->addAction(QString());
        mnemonics.setTitle(item, localizedString(bundle, key));
        item->setData(QString::fromUtf8(key));
        item->setCheckable(true);
        item->setChecked(profileShowInFinder != 0);
        connect(item, &QAction::triggered, this, [this, item] {
            item->setChecked(!item->isChecked()); // undone: the command changes the mark
            showInFinder(item);
        });
    }
    fileMenuLanguage->addAction(subMenuItemFileOption);
}

void AppDelegate::showInFinder(QObject*) {
    TraceScope trace("showInFinder");
    if (fileMenuLanguage == nullptr || fileMenuLanguage->actions().size() <= otherOptionsItem)
        return;
    const QMenu* options = fileMenuLanguage->actions().at(otherOptionsItem)->menu();
    if (options == nullptr)
        return;
    const QString title = QString::fromStdString(localizedString(mlangBundle, "ShowInFinder"));
    for (QAction* item : options->actions()) {
        if (plainTitle(item->text()) != title)
            continue;
        item->setChecked(!item->isChecked());
        profileShowInFinder = item->isChecked() ? 1 : 0;
        return;
    }
}

} // namespace paperline

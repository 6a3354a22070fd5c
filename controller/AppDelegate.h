// The one controller of the application: owner of all state, and the operations that join the
// subsystems. Its operations are written in slices, one file per group below. Only slices, tests
// and main.cpp include this header.
#pragma once

#include "codecs/pixels/Image.h"
#include "controller/InterfaceOutlets.h"
#include "controller/LocalisationState.h"
#include "controller/OutputState.h"
#include "controller/SettingsState.h"
#include "controller/TwainState.h"
#include "controller/ViewerState.h"
#include "twain/records/TwainTypes.h"

#include <QObject>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class QModelIndex;
class QWidget;

namespace paperline {

class PdfContext;

struct LaunchOptions {
    uint32_t brand = PAPERLINE_BRAND;
    // The command line: windows are never shown; the settings file, the data source's language file
    // and the window's temporary folder stay untouched.
    bool commandLine = false;
    // The command line's choice of source (product name); empty: as the window would choose.
    std::string sourceName;
};

class AppDelegate : public QObject,
                    public SettingsState,
                    public TwainState,
                    public OutputState,
                    public ViewerState,
                    public InterfaceOutlets,
                    public LocalisationState {
    Q_OBJECT

public:
    explicit AppDelegate(LaunchOptions options = {});
    ~AppDelegate() override;

    const LaunchOptions& launchOptions() const { return launchOptions_; }

    // Lifecycle: app/Lifecycle.cpp
    AppDelegate* init(); // null: the application is ending
    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    void windowDidLoad();
    void initialApplicationUserInterface();
    std::string
    applicationFilesDirectory() const; // user's application-support folder + "/Corvane.Paperline"
    void windowWillClose();
    void applicationWillTerminate();
    void makeTemporaryFolders(); // the fresh temporary root and its two staging folders
    void
    loadSettingsOfSelectedSource(); // settings, texts and data source language of mSourceDSSelect
    void openOnlySource();
    void showInstalledSourcesChoice(); // several sources: the selection window
    void reloadSourceTable();
    void selectSourceRow(uint32_t row);
    bool runSelectionWindow(); // true: ended by OK
    void showMainWindow();

    // Settings store: app/SettingsStore.cpp
    void ReadDefaultScannerName();
    void ReadUISettingForLastLanguage();
    void ReadSettingForCreateFolder();
    void ReadUISetting();
    void ReadDefaultSaveImageName();
    void setDefaultProfile(); // what ReadUISetting takes when there is no settings file
    void fixUpSaveFolder();   // runs after every ReadUISetting of the launch
    void writeDefaultSetting(QObject* ignored);
    void WriteUISetting(QObject* ignored);
    void writeSettingsAtTermination();
    void* input(const std::string& message, const std::string& defaultValue); // always none

    // Brand profile: app/AboutPanel.cpp
    void orderFrontStandardAboutPanel(QObject* sender);

    // TWAIN connection, discovery and selection: twain/SourceSelection.cpp
    void TwainInit();
    void SearchAllDS();
    int32_t selectSpcificSource(); // always 0
    void getTwiainDSInfo();
    uint32_t GetDefaultIdentityIndex();
    uint32_t CheckIdentityWithScannerName(const std::string& name);
    uint16_t CheckIdentity(uint32_t index);
    uint16_t CheckDefaultIdentity();
    uint16_t selectSource();
    void doBtnOK(QObject* sender);
    void doBtnCancel(QObject* sender);

    // Acquisition control: twain/Acquisition.cpp
    void toolBarItemScan(QObject* sender);
    void toolBarItemSetup(QObject* sender);
    uint16_t nonUI();
    uint16_t setupUI();
    uint16_t aquireNativeXfer();
    uint16_t aquireMemoryXfer();
    uint16_t aquireFileXfer();
    void xferReady(QObject* sender);
    void closeRequest(QObject* sender);
    uint16_t ShowBarcodeInfo();
    void speedTest();
    // Every end of a scan: idle again, controls enabled, observer told. `scanSetupAfter` is left in
    // mScanSetup.
    void endScan(int32_t scanSetupAfter = 0);

    // Transfer completion: twain/TransferCompletion.cpp
    void completeMemoryXfer();
    void completeNativeXfer();
    void completeFileXfer();
    uint64_t get_free_memory();
    int32_t checkMemorySize(uint32_t megabytes);
    void checkmemoryEnough();

    // Data source language: twain/SourceLanguage.cpp (mode 1 read, 2 write)
    void ReadWriteDSLanguageSetting(int32_t mode, bool orgLanaguage);

    // Naming and saving a page: output/PageSaving.cpp
    int32_t saveXferDatatoMedia(BitmapImageRep& imageRep,
                                const Image& orgImage,
                                uint8_t* tmppDst1,
                                float xRes,
                                float yRes,
                                TW_IMAGEINFO imageInfomation,
                                int32_t imageBytesPerLine);
    int32_t checkFreeDiskSpace(int64_t byteCount, const std::string& volumePath); // 1, or -1
    void updateDateTimeInfo2();
    void updateDateTimeInfo();
    bool Contains(const std::string& needle, const std::string& text) const;

    // Writers of single pages, BMP, JPEG, PNG, GIF and TIFF: output/PageWriters.cpp
    int32_t saveAsBMPWithName(uint8_t* pixels,
                              BitmapImageRep& imageRep,
                              uint32_t xRes,
                              uint32_t yRes,
                              const std::string& fileName);

    int32_t saveAsJpegWithName(const Image& image,
                               int32_t imageType,
                               const std::string& fileName,
                               const std::string& volumePath,
                               int32_t resolution);
    int32_t saveAsJpegWithName_transfer(const Image& image,
                                        int32_t imageType,
                                        const std::string& fileName,
                                        const std::string& volumePath);
    // Scaling: output/ScaleImage.cpp. A new image of exactly the target size with the source
    // centred in it; invalid for an invalid source.
    Image imageByScalingProportionallyToSize(Size targetSizePoints, const Image& sourceImage);
    Image saveAsJpegWithName_scaleSize_4PDF(const Image& image); // a quarter of its size

    // Joined TIFF and PDF files: output/JoinedFiles.cpp
    std::vector<std::string> sortArray(std::vector<std::string> names) const; // plain, ascending
    int32_t mergeTiffImage(const std::string& folder);                        // 1; -2 not written
    int32_t mergeTiffImageEx(const std::string& folder); // 1; -1 the folder is empty

    int32_t CreatePDF(const std::string& folder, const std::string& outFileName); // 1 or -2
    int32_t CreateMPDF(const std::string& folder);                                // 1 or -2

    // PDF without a caller in the scanning flow: output/PdfLibrary.cpp
    void appendPdf(const std::string& pdfFile,
                   const std::string& appendPdfFile,
                   const std::string& OutputFileName);
    void appendPdfAtURL(const std::string& path, PdfContext& toContext);
    void saveAsPDFWithName(const Image& image, const std::string& fileName); // may end the process
    void savePDF(Image& image, const std::string& fileName, bool multipage); // writes nothing

    // Maker and model in saved files: output/PatchMetadata.cpp
    void replaceExifInfo(const std::string& path, const std::string& modelName);
    void replacePDFProducer(const std::string& path, const std::string& modelName);

    // Around a multi-page batch: output/MultiPageBatch.cpp
    // Before the staging folders or the temporary root are removed: pages that a batch could not
    // put into its file move to a folder of the user's, and list entries without a file go.
    void keepStagedPages();
    void keepPagesOfEarlierRuns(); // in this scratch root, and in those of ended commands
    void tellKeptPages();          // says where they are, once
    // After the last page: joins the staged pages and moves the result to its name. False, after
    // its message: the scan ends without showing results. True at once for single-page formats.
    bool joinMultiPageFile();

    // Page list: viewer/PageList.cpp
    void GetImageFromImageFolder();
    void deleteFolderImage();
    int32_t addOneImageToScrollView(const Image& image);
    void GetImageFromImageBuffer(const QImage& image);

    // The tables' questions: viewer/PageListRows.cpp
    uint32_t numberOfRowsInTableView(const QObject* tableView) const;
    TableObjectValue objectValueForTableColumn(const QObject* tableView, int row) const;
    void willDisplayCell(const QObject* tableView, CustomCell& cell, int row) const;
    void tableViewSelectionDidChange(QObject* tableView, int row);
    void reportRowSelection(QTableView* table); // calls the above from now on; -1 for no row
    void reloadMainTable();                     // asks _tableViewMain to read its rows again
    void dropNewestPath(); // takes the newest of imageFilePath off the list, with its rows
    void selectLastRow();
    void deselectRows(); // the page on show is none of the list's

    // Page view: viewer/PageView.cpp
    void showFitlSizeImage(uint32_t row);
    void showActualSizeImage(uint32_t row);
    void showRow(uint32_t row); // in the present mode
    void toolBarItemFitPage(QObject* sender);
    void toolBarItemActualPage(QObject* sender);
    bool shouldHideDividerAtIndex(int dividerIndex) const;
    void splitViewDidResizeSubviews();
    // Joins page list and page view to the controller; once, when the window's outlets are filled:
    // viewer/PageViewSetup.cpp
    void connectPageViews();
    void pagePaneDidResize();

    // The window and its wiring: ui/Interface.cpp
    void loadInterface(); // makes every outlet and joins it to its command; once, before launch

    // Titles: ui/Titles.cpp
    void SetToolbarItemAndMenuUI(const std::shared_ptr<const LanguageBundle>& bundle);
    void SetToolbarItemTip(const std::shared_ptr<const LanguageBundle>& bundle);

    // Toolbar and File menu: ui/Commands.cpp
    void enableToolbatItems(bool enabled);
    void enableSavingControls(bool enabled); // format list and save-folder field
    void menuFileScan(QObject* sender);
    void menuFileSetup(QObject* sender);
    void menuFileQuit(QObject* sender);
    void menuFileSelectLanguage(QObject* sender);
    void toolBarItemFileFormat(QObject* sender);
    void menuFileSave(QObject* sender);
    void showSaveSwitch(bool on); // the save switch's picture
    void layOutWindow();          // panes for the save switch; shows the page again
    void toolBarItemFileFormatSelect(int index);
    void eyeDropperCursor(QObject* sender);

    // Save folder and options: ui/FolderCommands.cpp
    void toolBarItemFolderSelect(QObject* sender);
    void openSaveFolder(QObject* sender);
    void addOtherOptionsItemtoMenu(const std::shared_ptr<const LanguageBundle>& bundle);
    void showInFinder(QObject* sender);

    // Status line: ui/StatusLine.cpp. The last two repaint at once, though the main thread works
    // on.
    void showStatus(const char* key);
    void showIdleStatus();
    void showPageCount();                         // and the empty page area, while there is no page
    void showScanningStatus(uint32_t pageNumber); // from 1
    void showSavingStatus(const std::string& path);

    // Messages: ui/Messages.cpp
    void showMemoryNotEnoughMessage();
    void showNoDisplayImageMessage();
    void showNoDisplayImageCheckAgainMessage();
    void showNoImageSaveMessage();
    void showNotCorrectFolderMessage();
    void showNoEnoughDiskSpaceMessage();
    void showSourceNotOpenedMessage();
    void showSourceFailureMessage(); // when a source failed and nobody has said so yet
    void showSetupFailureMessage();  // the same when its own window did not show
    void showPagesKeptMessage(const std::string& folder);

    // Localisation: ui/Localisation.cpp
    void getSystemInfo();
    int32_t setFirstUILanguage(int32_t mode);
    void setProfileLanguage(int32_t language); // and its position in the menu of a brand's own list
    void titleSelectionWindow();
    void addLanguageItemtoMenu(const std::shared_ptr<const LanguageBundle>& bundle);
    void changeLanguage(QAction* menuItem);
    void checkLanguageMenuState(uint32_t position, bool on);
    AvailableLanguage* supportedLanguages(int32_t& count); // those offered, in table order
    // Makes the language's folder the source of all texts. False, and nothing changes, without it.
    bool loadLanguage(int32_t language);
    void rebuildOptionsMenu();
    void rebuildMenusAndLabels(); // all texts that the current language gives

private:
    LaunchOptions launchOptions_;
    std::vector<std::unique_ptr<QWidget>> windows_; // what the outlets point into
};

} // namespace paperline

// Connects to the data source manager, lists the sources and selects one.
#include "controller/AppDelegate.h"

#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/places/Places.h"
#include "platform/plist/PropertyList.h"
#include "twain/SourceCallback.h"
#include "twain/TWAINHandler.h"

#include <QDialog>

#include <algorithm>
#include <strings.h>

namespace paperline {

TWAINHandler* gTWAINHandler = nullptr;

void endTwainSession() {
    if (gTWAINHandler != nullptr)
        discardWaitingPage(*gTWAINHandler);
    delete gTWAINHandler;
    gTWAINHandler = nullptr;
}

namespace {

// For a manager that never ends its list.
constexpr int identityLimit = 10'000;

TWAINHandler::ApplicationStrings applicationStrings() {
    const BrandProfile& brand = brandProfile(gBrandNumber);
    return {.manufacturer = TW_STR32::from(brand.twainManufacturer),
            .productFamily = TW_STR32::from(brand.twainProductFamily),
            .productName = TW_STR32::from(brand.twainProductName),
            .versionText = TW_STR32::from(twainVersionText)};
}

void traceComparison(const std::string& found, const std::string& wanted) {
    if (!isTracing())
        return;
    traceLine(("Manufacturer org  " + found).c_str());
    traceLine(("Manufacturer dest " + wanted).c_str());
}

// All codes fit 16 bits except -1, which stays different from 0.
uint16_t code16(int32_t code) {
    return static_cast<uint16_t>(code);
}

// Opens the source to see whether it works, and closes it.
uint16_t testOpen() {
    const int32_t code = gTWAINHandler->OpenDS();
    if (code == twain::TWRC_SUCCESS)
        gTWAINHandler->CloseDS();
    return code16(code);
}

uint16_t testOpenAndRemember(AppDelegate& controller) {
    const uint16_t code = testOpen();
    if (code == twain::TWRC_SUCCESS) {
        controller.scannerName = gTWAINHandler->dsIdentity.ProductName.text();
        controller.currentManufacturer = gTWAINHandler->dsIdentity.Manufacturer.text();
    }
    return code;
}

uint32_t indexOfProduct(const std::vector<TWAIN_INFO>& sources, const std::string& name) {
    const auto found = std::find_if(sources.begin(), sources.end(), [&](const TWAIN_INFO& source) {
        return source.productNameText() == name;
    });
    return found == sources.end() ? 0 : static_cast<uint32_t>(found - sources.begin());
}

// Makes the first source with that product name and manufacturer current, else the last of the
// list.
void fetchIdentity(const TWAIN_INFO& wanted) {
    const std::string product = wanted.productNameText();
    const std::string maker = wanted.manufacturerText();
    TW_UINT16 message = twain::MSG_GETFIRST;
    for (int count = 0; count < identityLimit; ++count) {
        TW_IDENTITY identity{};
        if (gTWAINHandler->GetIdentity(message, identity) != twain::TWRC_SUCCESS)
            return;
        const std::string foundMaker = identity.Manufacturer.text();
        traceComparison(foundMaker, maker);
        if (identity.ProductName.text() == product && foundMaker == maker)
            return;
        message = twain::MSG_GETNEXT;
    }
}

} // namespace

void AppDelegate::TwainInit() {
    TraceScope trace("TwainInit");
    if (gTWAINHandler == nullptr) {
        gTWAINHandler = new TWAINHandler(applicationStrings());
        if (const char* line = brandProfile(gBrandNumber).handlerTraceLine)
            traceLine(line);
    }
    registerSourceCallback(*this);
    gTWAINHandler->GetDSIdentity();
}

void AppDelegate::SearchAllDS() {
    TraceScope trace("SearchAllDS");
    dsDatas.clear();
    for (const std::string& folder : dataSourceFolders()) {
        for (const std::string& entry : folderEntries(folder)) {
            if (strcasecmp(pathExtension(entry).c_str(), "ds") != 0)
                continue;
            const std::string path = folder + "/" + entry;
            const PropertyListFile info =
                readPropertyList(path + "/Versions/A/Resources/Info.plist");
            if (info.status == PropertyListStatus::missing)
                continue;
            dsDatas.push_back(DsData::initWithData(entry,
                                                   path,
                                                   textUnder(info.root, "Manufacturer"),
                                                   textUnder(info.root, "ProductName")));
        }
    }
}

int32_t AppDelegate::selectSpcificSource() {
    TraceScope trace("selectSpcificSource");
    const BrandProfile& brand = brandProfile(gBrandNumber);
    dsArray.clear();
    TW_IDENTITY identity{};
    // On purpose: once for the trace, once more below.
    traceValue("selectSpcificSource - MSG_GETFIRST",
               gTWAINHandler->GetIdentity(twain::MSG_GETFIRST, identity));
    TW_UINT16 message = twain::MSG_GETFIRST;
    for (int count = 0; count < identityLimit; ++count) {
        identity = {};
        if (gTWAINHandler->GetIdentity(message, identity) != twain::TWRC_SUCCESS)
            break;
        message = twain::MSG_GETNEXT;
        const TWAIN_INFO source = TWAIN_INFO::from(identity);
        if (brand.offersSource(source.manufacturerText(), source.productFamilyText()))
            dsArray.push_back(source);
    }
    return 0;
}

void AppDelegate::getTwiainDSInfo() {
    TraceScope trace("getTwiainDSInfo");
    hasSourceBundle = false;
    if (mSourceDSSelect >= dsArray.size())
        return;
    const std::string product = dsArray[mSourceDSSelect].productNameText();
    for (size_t index = 0; index < dsDatas.size(); ++index) {
        if (dsDatas[index].ProductName != product)
            continue;
        currentProductName = product;
        currentDSIndex = static_cast<int32_t>(index);
        hasSourceBundle = true;
        traceText("currentProductName", currentProductName);
        return;
    }
}

uint32_t AppDelegate::GetDefaultIdentityIndex() {
    TraceScope trace("GetDefaultIdentityIndex");
    TW_IDENTITY identity{};
    if (gTWAINHandler->GetIdentity(twain::MSG_GETDEFAULT, identity) != twain::TWRC_SUCCESS)
        return 0;
    return indexOfProduct(dsArray, identity.ProductName.text());
}

uint32_t AppDelegate::CheckIdentityWithScannerName(const std::string& name) {
    TraceScope trace("CheckIdentityWithScannerName");
    return indexOfProduct(dsArray, name);
}

uint16_t AppDelegate::CheckIdentity(uint32_t index) {
    TraceScope trace("CheckIdentity");
    if (index >= dsArray.size())
        return twain::TWRC_FAILURE;
    const TWAIN_INFO& wanted = dsArray[index];
    if (isTracing()) {
        traceText("ProductName select", wanted.productNameText());
        traceText("Manufacturer select", wanted.manufacturerText());
    }
    fetchIdentity(wanted);
    return testOpenAndRemember(*this);
}

uint16_t AppDelegate::CheckDefaultIdentity() {
    TraceScope trace("CheckDefaultIdentity");
    TW_IDENTITY identity{};
    gTWAINHandler->GetIdentity(twain::MSG_GETDEFAULT, identity);
    const uint16_t code = testOpenAndRemember(*this);
    mSourceDSSelect = GetDefaultIdentityIndex();
    return code;
}

uint16_t AppDelegate::selectSource() {
    TraceScope trace("selectSource");
    const int32_t chosen = gTWAINHandler->UserSelect();
    if (chosen != twain::TWRC_SUCCESS)
        return code16(chosen);
    return testOpen();
}

void AppDelegate::doBtnOK(QObject*) {
    TraceScope trace("doBtnOK");
    if (twainSelectSourceWindow != nullptr)
        twainSelectSourceWindow->done(modalStopped);
}

void AppDelegate::doBtnCancel(QObject*) {
    TraceScope trace("doBtnCancel");
    if (twainSelectSourceWindow != nullptr)
        twainSelectSourceWindow->done(modalAborted);
}

} // namespace paperline

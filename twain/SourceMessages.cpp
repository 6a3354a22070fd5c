// Messages that say why a source failed.
#include "controller/AppDelegate.h"

#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/MainLoop.h"
#include "twain/TWAINHandler.h"
#include "twain/manager/DataSourceManager.h"

#include <array>

namespace paperline {
namespace {

struct ConditionText {
    uint16_t conditionCode;
    const char* key;
};

constexpr std::array<ConditionText, 9> conditionTexts{{
    {twain::TWCC_PAPERJAM, "SourcePaperJam"},
    {twain::TWCC_PAPERDOUBLEFEED, "SourceDoubleFeed"},
    {twain::TWCC_NOMEDIA, "SourceNoPaper"},
    {twain::TWCC_INTERLOCK, "SourceCoverOpen"},
    {twain::TWCC_CHECKDEVICEONLINE, "SourceNotOpened"},
    {twain::TWCC_MAXCONNECTIONS, "SourceBusy"},
    {twain::TWCC_DENIED, "SourceDenied"},
    {twain::TWCC_LOWMEMORY, "ShowNoMem"},
    {twain::TWCC_BADVALUE, "SourceRefusedOption"},
}};

const char* keyOf(uint16_t conditionCode, const char* otherwise) {
    for (const ConditionText& entry : conditionTexts)
        if (entry.conditionCode == conditionCode)
            return entry.key;
    return otherwise;
}

// In sources of other makers the number may mean something else.
bool isHungWorker(const SourceFailure& failure) {
    return failure.conditionCode == twain::conditionWorkerHung && gTWAINHandler != nullptr &&
           gTWAINHandler->dsIdentity.Manufacturer.text() == ownSourcesMaker;
}

void showFailure(AppDelegate& controller, const SourceFailure& failure, const char* otherwise) {
    controller.sourceHung = controller.sourceHung || isHungWorker(failure);
    const DelayedMessagesHold hold;
    const std::string message =
        localizedString(gLanguageBundle, keyOf(failure.conditionCode, otherwise));
    // The source's own text may be the same sentence.
    runAlertPanel({.title = " ",
                   .message = message,
                   .informativeText = failure.text == message ? std::string() : failure.text,
                   .defaultButton = ""});
}

} // namespace

void AppDelegate::showSourceNotOpenedMessage() {
    TraceScope trace("showSourceNotOpenedMessage");
    showFailure(*this, takeSourceFailure().value_or(SourceFailure{}), "SourceNotOpened");
}

void AppDelegate::showSourceFailureMessage() {
    if (const std::optional<SourceFailure> failure = takeSourceFailure()) {
        TraceScope trace("showSourceFailureMessage");
        showFailure(*this, *failure, "SourceStopped");
    }
}

void AppDelegate::showSetupFailureMessage() {
    std::optional<SourceFailure> failure = takeSourceFailure();
    if (!failure)
        return;
    TraceScope trace("showSetupFailureMessage");
    if (failure->conditionCode == twain::TWCC_BADPROTOCOL) { // it has no settings dialog
        failure->text.clear();                               // which names the TWAIN request only
        showFailure(*this, *failure, "SourceNoSettings");
    } else {
        showFailure(*this, *failure, "SourceNotOpened");
    }
}

} // namespace paperline

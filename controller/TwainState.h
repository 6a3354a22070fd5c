// State of the TWAIN session: known data sources and the acquisition under way.
#pragma once

#include "controller/DsData.h"
#include "controller/TwainInfo.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class QPushButton;

namespace paperline {

class TWAINHandler;

// Results of the selection window.
inline constexpr int modalStopped = -1000; // OK
inline constexpr int modalAborted = -1001; // Cancel

struct TwainState {
    std::vector<TWAIN_INFO> dsArray; // sources that the manager reports, brand filter passed
    std::vector<DsData> dsDatas;     // bundles on disk
    uint32_t SelectSourceCount = 0;
    uint32_t mSourceDSSelect = UINT32_MAX; // above 999: use the default source
    uint32_t mSourceDSDefault = 0;         // row preselected in the selection table
    int32_t currentDSIndex = 0;            // into dsDatas
    bool hasSourceBundle = true; // the selected source has a bundle on disk: currentDSIndex is its
    std::string currentProductName;
    std::string currentManufacturer;
    std::string scannerName; // last used source's product name

    QPushButton* mAquireNativeXfer = nullptr;
    QPushButton* mAquireMemoryXfer = nullptr;
    int32_t mNativeTransfer = 0;     // 1 native, 2 memory, 3 file
    bool sourceHung = false;         // a worker of our own sources gave no answer and was ended
    bool settingsDialogOpen = false; // the source was enabled for its settings only

    // Told at every end of a scan or of the settings dialog, failed ones included, when the source
    // is closed and the controls are enabled.
    std::function<void()> scanEndedObserver;
};

extern TWAINHandler* gTWAINHandler; // created once by TwainInit
// Ends the process's session: the handler disables and closes what is still open.
void endTwainSession();

extern bool gHighResolutionScan;    // the page's horizontal resolution is at least 301 dpi
extern int32_t gPageHeightAt300Dpi; // pixels high x 300 / horizontal resolution

} // namespace paperline

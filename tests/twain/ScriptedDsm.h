// A data source manager that answers from a script and records every call. Installed in place of
// the loaded library for as long as it lives; main thread, but for the calls it makes back.
#pragma once

#include "twain/manager/DataSourceManager.h"
#include "twain/records/TwainTypes.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace paperline::test {

struct Triplet {
    uint32_t group = 0;
    uint16_t type = 0;
    uint16_t message = 0;
    auto operator<=>(const Triplet&) const = default;
};

// "CONTROL/IDENTITY/OPENDS"; numbers where there is no name.
std::string nameOf(const Triplet& triplet);

struct RecordedCall {
    Triplet triplet;
    TW_IDENTITY origin{};
    std::optional<TW_IDENTITY> destination;
    std::vector<uint8_t> sent;     // the record as the application filled it; empty: no data
    std::vector<uint8_t> answered; // the record when the call returned
    uint16_t code = 0;

    // The record sent; the caller knows the type.
    template <typename Record> Record sentAs() const { return as<Record>(sent); }
    template <typename Record> Record answeredAs() const { return as<Record>(answered); }

private:
    template <typename Record> static Record as(const std::vector<uint8_t>& bytes) {
        Record record{};
        if (bytes.size() >= sizeof record)
            std::copy_n(bytes.begin(), sizeof record, reinterpret_cast<uint8_t*>(&record));
        return record;
    }
};

// One answer to DAT_IMAGEMEMXFER. Fields of the record without a value are left as sent.
struct ScriptedStrip {
    std::optional<uint32_t> yOffset{};
    std::optional<uint32_t> rows{};
    std::optional<uint32_t> bytesPerRow{};
    uint16_t code = twain::TWRC_SUCCESS;
    std::vector<uint8_t> bytes{}; // written to the start of the buffer, cut to its length
};

struct ScriptedPage {
    TW_IMAGEINFO info{};
    std::vector<ScriptedStrip> strips{};  // after the last one the last one again, for ever
    std::vector<uint8_t> nativePicture{}; // bytes behind the handle of a native transfer
    uint16_t infoCode = twain::TWRC_SUCCESS;
    uint16_t endCode = twain::TWRC_SUCCESS;
};

enum class ReadyFrom { insideEnable, otherThread };

struct ScriptedSource {
    TW_IDENTITY identity{};
    std::vector<ScriptedPage> pages{};
    bool endlessPages = false; // the last page comes again, for ever; 65535 are pending
    int readyMessages = 1;     // how often the source reports that a transfer is ready
    ReadyFrom readyFrom = ReadyFrom::insideEnable;
    uint16_t setupAnswer = 0;         // message sent when the settings dialog is enabled; 0: none
    std::string fileOfFileTransfer{}; // answered to DAT_SETUPFILEXFER
};

TW_IDENTITY sourceIdentity(std::string_view manufacturer,
                           std::string_view productName,
                           std::string_view productFamily = "PageCentral");

// Image information of a page in 1, 8 or 24 bits.
TW_IMAGEINFO pageInfo(int32_t widthPixels, int32_t heightPixels, int16_t bitsPerPixel, int16_t dpi);

// A whole page of that size whose byte n is (seed + n) mod 251, delivered in strips of
// `rowsPerStrip` rows (0: one strip).
ScriptedPage goodPage(const TW_IMAGEINFO& info, uint8_t seed = 1, uint32_t rowsPerStrip = 0);
// Bytes of that page as they lie in a bitmap once every strip is marked.
std::vector<uint8_t>
bytesOfGoodPage(const TW_IMAGEINFO& info, uint8_t seed = 1, uint32_t rowsPerStrip = 0);

class ScriptedDsm {
public:
    ScriptedDsm();
    ~ScriptedDsm();
    ScriptedDsm(const ScriptedDsm&) = delete;
    ScriptedDsm& operator=(const ScriptedDsm&) = delete;

    std::vector<ScriptedSource> sources;
    size_t defaultSource = 0;

    // The call number `occurrence` (from 0) of the triplet answers `code` and does nothing; every
    // call with occurrence -1.
    void fail(const Triplet& triplet, uint16_t code, int occurrence = -1);
    // Runs before the scripted answer; a value replaces it.
    std::function<std::optional<uint16_t>(const Triplet&, TW_MEMREF)> intercept;

    // Sends a message to the registered callback as the open source, on this thread.
    uint16_t send(uint16_t message);
    // The same from a thread of its own, which has ended when this returns.
    void sendFromOtherThread(uint16_t message);

    // At most the first 20,000; the others are counted only.
    const std::vector<RecordedCall>& calls() const { return calls_; }
    std::vector<std::string> names() const;     // of all calls, in order
    size_t count(const Triplet& triplet) const; // since forgetCalls
    const RecordedCall* last(const Triplet& triplet) const;
    void forgetCalls();
    void reset(); // as new: no sources, no failures, nothing open

    // What a manager of the standard would have refused: "CONTROL/USERINTERFACE/DISABLEDS while a
    // transfer is pending".
    const std::vector<std::string>& sequenceErrors() const { return sequenceErrors_; }
    bool isSourceOpen() const { return openSource_ != nullptr; }
    bool isSourceEnabled() const { return enabled_; }
    bool isManagerOpen() const { return managerOpen_; }

private:
    uint16_t
    entry(TW_IDENTITY* origin, TW_IDENTITY* destination, const Triplet& triplet, TW_MEMREF data);
    uint16_t answer(const Triplet& triplet, TW_MEMREF data);
    uint16_t answerIdentity(uint16_t message, TW_IDENTITY& identity);
    uint16_t answerUserInterface(uint16_t message);
    uint16_t answerPendingTransfers(uint16_t message, TW_PENDINGXFERS& pending);
    uint16_t answerImage(const Triplet& triplet, TW_MEMREF data);
    uint16_t answerStrip(TW_IMAGEMEMXFER& record);
    uint16_t answerNative(TW_HANDLE& handle);
    uint16_t enable();
    void sendReady();
    const ScriptedPage* page() const;
    void expect(bool condition, const Triplet& triplet, const char* complaint);

    std::vector<RecordedCall> calls_;
    std::vector<std::string> sequenceErrors_;
    std::map<Triplet, std::map<int, uint16_t>> failures_;
    std::map<Triplet, int> occurrences_;
    std::map<Triplet, size_t> counts_;
    TwainCallback callback_ = nullptr;
    TW_IDENTITY application_{};
    size_t listPosition_ = 0;
    const ScriptedSource* openSource_ = nullptr;
    bool managerOpen_ = false;
    bool enabled_ = false;
    bool transferPending_ = false;
    size_t pageIndex_ = 0;
    size_t stripIndex_ = 0;
};

// The triplets of the session by name.
inline constexpr Triplet openDsm{twain::DG_CONTROL, twain::DAT_PARENT, twain::MSG_OPENDSM};
inline constexpr Triplet closeDsm{twain::DG_CONTROL, twain::DAT_PARENT, twain::MSG_CLOSEDSM};
inline constexpr Triplet registerCallback{
    twain::DG_CONTROL, twain::DAT_CALLBACK, twain::MSG_REGISTER_CALLBACK};
inline constexpr Triplet getFirst{twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_GETFIRST};
inline constexpr Triplet getNext{twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_GETNEXT};
inline constexpr Triplet getDefault{twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_GETDEFAULT};
inline constexpr Triplet userSelect{twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_USERSELECT};
inline constexpr Triplet openDs{twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_OPENDS};
inline constexpr Triplet closeDs{twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_CLOSEDS};
inline constexpr Triplet enableDs{twain::DG_CONTROL, twain::DAT_USERINTERFACE, twain::MSG_ENABLEDS};
inline constexpr Triplet enableDsUiOnly{
    twain::DG_CONTROL, twain::DAT_USERINTERFACE, twain::MSG_ENABLEDSUIONLY};
inline constexpr Triplet disableDs{
    twain::DG_CONTROL, twain::DAT_USERINTERFACE, twain::MSG_DISABLEDS};
inline constexpr Triplet imageInfo{twain::DG_IMAGE, twain::DAT_IMAGEINFO, twain::MSG_GET};
inline constexpr Triplet setupMemXfer{twain::DG_CONTROL, twain::DAT_SETUPMEMXFER, twain::MSG_GET};
inline constexpr Triplet imageMemXfer{twain::DG_IMAGE, twain::DAT_IMAGEMEMXFER, twain::MSG_GET};
inline constexpr Triplet imageNativeXfer{
    twain::DG_IMAGE, twain::DAT_IMAGENATIVEXFER, twain::MSG_GET};
inline constexpr Triplet setupFileXfer{
    twain::DG_CONTROL, twain::DAT_SETUPFILEXFER, twain::MSG_GETDEFAULT};
inline constexpr Triplet imageFileXfer{twain::DG_IMAGE, twain::DAT_IMAGEFILEXFER, twain::MSG_GET};
inline constexpr Triplet endXfer{twain::DG_CONTROL, twain::DAT_PENDINGXFERS, twain::MSG_ENDXFER};
inline constexpr Triplet resetXfer{twain::DG_CONTROL, twain::DAT_PENDINGXFERS, twain::MSG_RESET};
inline constexpr Triplet extImageInfo{twain::DG_IMAGE, twain::DAT_EXTIMAGEINFO, twain::MSG_GET};

} // namespace paperline::test

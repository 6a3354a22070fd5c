#include "ScriptedDsm.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace paperline::test {
namespace {

constexpr size_t recordedCallLimit = 20'000;

size_t recordSize(const Triplet& triplet) {
    static const std::map<uint16_t, size_t> sizes{
        {twain::DAT_IDENTITY, sizeof(TW_IDENTITY)},
        {twain::DAT_USERINTERFACE, sizeof(TW_USERINTERFACE)},
        {twain::DAT_CALLBACK, sizeof(TW_CALLBACK)},
        {twain::DAT_PENDINGXFERS, sizeof(TW_PENDINGXFERS)},
        {twain::DAT_SETUPMEMXFER, sizeof(TW_SETUPMEMXFER)},
        {twain::DAT_SETUPFILEXFER, sizeof(TW_SETUPFILEXFER)},
        {twain::DAT_IMAGEINFO, sizeof(TW_IMAGEINFO)},
        {twain::DAT_IMAGEMEMXFER, sizeof(TW_IMAGEMEMXFER)},
        {twain::DAT_IMAGENATIVEXFER, sizeof(TW_HANDLE)},
        {twain::DAT_EXTIMAGEINFO, sizeof(TW_EXTIMAGEINFO)}};
    const auto found = sizes.find(triplet.type);
    return found == sizes.end() ? 0 : found->second;
}

std::vector<uint8_t> snapshot(const Triplet& triplet, const void* data) {
    if (data == nullptr)
        return {};
    const auto* bytes = static_cast<const uint8_t*>(data);
    return {bytes, bytes + recordSize(triplet)};
}

std::string named(uint16_t number, const std::map<uint16_t, const char*>& names) {
    const auto found = names.find(number);
    return found != names.end() ? found->second : std::to_string(number);
}

std::string messageName(const Triplet& triplet) {
    // MSG_RESET and MSG_GET have one number each for every kind of data.
    static const std::map<uint16_t, const char*> names{
        {twain::MSG_GET, "GET"},
        {twain::MSG_GETDEFAULT, "GETDEFAULT"},
        {twain::MSG_GETFIRST, "GETFIRST"},
        {twain::MSG_GETNEXT, "GETNEXT"},
        {twain::MSG_RESET, "RESET"},
        {twain::MSG_OPENDSM, "OPENDSM"},
        {twain::MSG_CLOSEDSM, "CLOSEDSM"},
        {twain::MSG_OPENDS, "OPENDS"},
        {twain::MSG_CLOSEDS, "CLOSEDS"},
        {twain::MSG_USERSELECT, "USERSELECT"},
        {twain::MSG_DISABLEDS, "DISABLEDS"},
        {twain::MSG_ENABLEDS, "ENABLEDS"},
        {twain::MSG_ENABLEDSUIONLY, "ENABLEDSUIONLY"},
        {twain::MSG_ENDXFER, "ENDXFER"},
        {twain::MSG_REGISTER_CALLBACK, "REGISTER_CALLBACK"}};
    return named(triplet.message, names);
}

bool needsTransfer(const Triplet& triplet) {
    return triplet == imageInfo || triplet == imageMemXfer || triplet == imageNativeXfer ||
           triplet == imageFileXfer || triplet == setupMemXfer || triplet == endXfer;
}

uint8_t patternByte(uint8_t seed, size_t position) {
    return static_cast<uint8_t>((seed + position) % 251);
}

size_t lineBytes(const TW_IMAGEINFO& info) {
    const auto width = static_cast<size_t>(info.ImageWidth);
    return info.BitsPerPixel == 1 ? (width + 7) / 8
                                  : width * static_cast<size_t>(info.SamplesPerPixel);
}

} // namespace

std::string nameOf(const Triplet& triplet) {
    static const std::map<uint16_t, const char*> types{
        {twain::DAT_IDENTITY, "IDENTITY"},
        {twain::DAT_PARENT, "PARENT"},
        {twain::DAT_USERINTERFACE, "USERINTERFACE"},
        {twain::DAT_CALLBACK, "CALLBACK"},
        {twain::DAT_ENTRYPOINT, "ENTRYPOINT"},
        {twain::DAT_PENDINGXFERS, "PENDINGXFERS"},
        {twain::DAT_SETUPMEMXFER, "SETUPMEMXFER"},
        {twain::DAT_SETUPFILEXFER, "SETUPFILEXFER"},
        {twain::DAT_IMAGEINFO, "IMAGEINFO"},
        {twain::DAT_IMAGEMEMXFER, "IMAGEMEMXFER"},
        {twain::DAT_IMAGENATIVEXFER, "IMAGENATIVEXFER"},
        {twain::DAT_IMAGEFILEXFER, "IMAGEFILEXFER"},
        {twain::DAT_EXTIMAGEINFO, "EXTIMAGEINFO"}};
    return std::string(triplet.group == twain::DG_IMAGE ? "IMAGE/" : "CONTROL/") +
           named(triplet.type, types) + "/" + messageName(triplet);
}

TW_IDENTITY sourceIdentity(std::string_view manufacturer,
                           std::string_view productName,
                           std::string_view productFamily) {
    TW_IDENTITY identity{};
    identity.Version = {1, 0, twain::TWLG_USA, twain::TWCY_USA, TW_STR32::from("1.0")};
    identity.ProtocolMajor = 2;
    identity.ProtocolMinor = 4;
    identity.SupportedGroups = twain::DG_CONTROL | twain::DG_IMAGE | twain::DF_DS2;
    identity.Manufacturer = TW_STR32::from(manufacturer);
    identity.ProductFamily = TW_STR32::from(productFamily);
    identity.ProductName = TW_STR32::from(productName);
    return identity;
}

TW_IMAGEINFO
pageInfo(int32_t widthPixels, int32_t heightPixels, int16_t bitsPerPixel, int16_t dpi) {
    TW_IMAGEINFO info{};
    info.XResolution = {dpi, 0};
    info.YResolution = {dpi, 0};
    info.ImageWidth = widthPixels;
    info.ImageLength = heightPixels;
    info.SamplesPerPixel = bitsPerPixel == 24 ? 3 : 1;
    const auto bitsPerSample = static_cast<int16_t>(bitsPerPixel / info.SamplesPerPixel);
    std::fill_n(info.BitsPerSample, info.SamplesPerPixel, bitsPerSample);
    info.BitsPerPixel = bitsPerPixel;
    info.PixelType = bitsPerPixel == 24  ? twain::TWPT_RGB
                     : bitsPerPixel == 1 ? twain::TWPT_BW
                                         : twain::TWPT_GRAY;
    return info;
}

ScriptedPage goodPage(const TW_IMAGEINFO& info, uint8_t seed, uint32_t rowsPerStrip) {
    ScriptedPage page{.info = info};
    const size_t stride = lineBytes(info);
    const auto height = static_cast<uint32_t>(info.ImageLength);
    const uint32_t step = rowsPerStrip == 0 ? height : rowsPerStrip;
    for (uint32_t y = 0; y < height; y += step) {
        const uint32_t rows = std::min(step, height - y);
        ScriptedStrip strip{.yOffset = y,
                            .rows = rows,
                            .bytesPerRow = static_cast<uint32_t>(stride),
                            .code = y + rows == height ? twain::TWRC_XFERDONE : twain::TWRC_SUCCESS,
                            .bytes = std::vector<uint8_t>(rows * stride)};
        for (size_t n = 0; n < strip.bytes.size(); ++n)
            strip.bytes[n] = patternByte(seed, y * stride + n);
        page.strips.push_back(std::move(strip));
    }
    return page;
}

std::vector<uint8_t>
bytesOfGoodPage(const TW_IMAGEINFO& info, uint8_t seed, uint32_t rowsPerStrip) {
    const size_t stride = lineBytes(info);
    const auto height = static_cast<size_t>(info.ImageLength);
    std::vector<uint8_t> bytes(stride * height);
    for (size_t n = 0; n < bytes.size(); ++n)
        bytes[n] = patternByte(seed, n);
    const size_t step = rowsPerStrip == 0 ? height : rowsPerStrip;
    constexpr uint8_t mark[]{0x21, 0x85, 0xE9};
    for (size_t y = 0; y < height; y += step) {
        for (size_t n = 0; n < sizeof mark && y * stride + n < bytes.size(); ++n)
            bytes[y * stride + n] = mark[n];
    }
    return bytes;
}

ScriptedDsm::ScriptedDsm() {
    setDsmEntry([this](TW_IDENTITY* origin,
                       TW_IDENTITY* destination,
                       TW_UINT32 group,
                       TW_UINT16 type,
                       TW_UINT16 message,
                       TW_MEMREF data) {
        return entry(origin, destination, {group, type, message}, data);
    });
}

ScriptedDsm::~ScriptedDsm() {
    setDsmEntry({});
}

void ScriptedDsm::fail(const Triplet& triplet, uint16_t code, int occurrence) {
    failures_[triplet][occurrence] = code;
}

uint16_t ScriptedDsm::send(uint16_t message) {
    if (callback_ == nullptr)
        return twain::TWRC_FAILURE;
    TW_IDENTITY source = openSource_ != nullptr ? openSource_->identity : TW_IDENTITY{};
    TW_IDENTITY application = application_;
    return callback_(&source, &application, twain::DG_CONTROL, twain::DAT_NULL, message, nullptr);
}

void ScriptedDsm::sendFromOtherThread(uint16_t message) {
    std::thread([this, message] { send(message); }).join();
}

std::vector<std::string> ScriptedDsm::names() const {
    std::vector<std::string> names;
    for (const RecordedCall& call : calls_)
        names.push_back(nameOf(call.triplet));
    return names;
}

size_t ScriptedDsm::count(const Triplet& triplet) const {
    const auto found = counts_.find(triplet);
    return found == counts_.end() ? 0 : found->second;
}

void ScriptedDsm::forgetCalls() {
    calls_.clear();
    counts_.clear();
}

void ScriptedDsm::reset() {
    forgetCalls();
    sources.clear();
    defaultSource = 0;
    intercept = nullptr;
    sequenceErrors_.clear();
    failures_.clear();
    occurrences_.clear();
    callback_ = nullptr;
    listPosition_ = 0;
    openSource_ = nullptr;
    managerOpen_ = false;
    enabled_ = false;
    transferPending_ = false;
    pageIndex_ = 0;
    stripIndex_ = 0;
}

const RecordedCall* ScriptedDsm::last(const Triplet& triplet) const {
    for (auto call = calls_.rbegin(); call != calls_.rend(); ++call) {
        if (call->triplet == triplet)
            return &*call;
    }
    return nullptr;
}

void ScriptedDsm::expect(bool condition, const Triplet& triplet, const char* complaint) {
    if (!condition)
        sequenceErrors_.push_back(nameOf(triplet) + " " + complaint);
}

const ScriptedPage* ScriptedDsm::page() const {
    if (openSource_ == nullptr || openSource_->pages.empty())
        return nullptr;
    const size_t last = openSource_->pages.size() - 1;
    if (pageIndex_ > last && !openSource_->endlessPages)
        return nullptr;
    return &openSource_->pages[std::min(pageIndex_, last)];
}

uint16_t ScriptedDsm::entry(TW_IDENTITY* origin,
                            TW_IDENTITY* destination,
                            const Triplet& triplet,
                            TW_MEMREF data) {
    application_ = *origin;
    ++counts_[triplet];
    if (calls_.size() >= recordedCallLimit)
        return answer(triplet, data);
    RecordedCall call;
    call.triplet = triplet;
    call.origin = *origin;
    if (destination != nullptr)
        call.destination = *destination;
    call.sent = snapshot(triplet, data);

    const size_t index = calls_.size();
    calls_.push_back(std::move(call)); // before the answer: a source may call back inside it
    const uint16_t code = answer(triplet, data);
    calls_[index].answered = snapshot(triplet, data);
    calls_[index].code = code;
    return code;
}

uint16_t ScriptedDsm::answer(const Triplet& triplet, TW_MEMREF data) {
    const int occurrence = occurrences_[triplet]++;
    if (intercept) {
        if (const std::optional<uint16_t> code = intercept(triplet, data))
            return *code;
    }
    if (const auto failures = failures_.find(triplet); failures != failures_.end()) {
        for (int key : {occurrence, -1}) {
            if (const auto failure = failures->second.find(key); failure != failures->second.end())
                return failure->second;
        }
    }
    if (needsTransfer(triplet))
        expect(enabled_ && transferPending_, triplet, "without a pending transfer");
    switch (triplet.type) {
    case twain::DAT_PARENT:
        managerOpen_ = triplet.message == twain::MSG_OPENDSM;
        return twain::TWRC_SUCCESS;
    case twain::DAT_CALLBACK:
        callback_ = reinterpret_cast<TwainCallback>(static_cast<TW_CALLBACK*>(data)->CallBackProc);
        return twain::TWRC_SUCCESS;
    case twain::DAT_IDENTITY:
        return answerIdentity(triplet.message, *static_cast<TW_IDENTITY*>(data));
    case twain::DAT_USERINTERFACE:
        return answerUserInterface(triplet.message);
    case twain::DAT_PENDINGXFERS:
        return answerPendingTransfers(triplet.message, *static_cast<TW_PENDINGXFERS*>(data));
    default:
        return answerImage(triplet, data);
    }
}

uint16_t ScriptedDsm::answerIdentity(uint16_t message, TW_IDENTITY& identity) {
    const Triplet triplet{twain::DG_CONTROL, twain::DAT_IDENTITY, message};
    if (message == twain::MSG_OPENDS) {
        expect(openSource_ == nullptr, triplet, "while a source is open");
        for (const ScriptedSource& source : sources) {
            if (source.identity.ProductName == identity.ProductName &&
                source.identity.Manufacturer == identity.Manufacturer) {
                openSource_ = &source;
                return twain::TWRC_SUCCESS;
            }
        }
        return twain::TWRC_FAILURE;
    }
    if (message == twain::MSG_CLOSEDS) {
        expect(!transferPending_, triplet, "while a transfer is pending");
        expect(!enabled_, triplet, "while the source is enabled");
        const bool wasOpen = openSource_ != nullptr;
        openSource_ = nullptr;
        return wasOpen ? twain::TWRC_SUCCESS : twain::TWRC_FAILURE;
    }
    if (message == twain::MSG_USERSELECT || message == twain::MSG_GETDEFAULT)
        listPosition_ = defaultSource;
    else
        listPosition_ = message == twain::MSG_GETFIRST ? 0 : listPosition_ + 1;
    if (listPosition_ >= sources.size())
        return twain::TWRC_ENDOFLIST;
    identity = sources[listPosition_].identity;
    identity.Id = 100 + listPosition_;
    return twain::TWRC_SUCCESS;
}

uint16_t ScriptedDsm::answerUserInterface(uint16_t message) {
    const Triplet triplet{twain::DG_CONTROL, twain::DAT_USERINTERFACE, message};
    if (message == twain::MSG_DISABLEDS) {
        expect(!transferPending_, triplet, "while a transfer is pending");
        const bool wasEnabled = enabled_;
        enabled_ = false;
        return wasEnabled ? twain::TWRC_SUCCESS : twain::TWRC_FAILURE;
    }
    if (openSource_ == nullptr || enabled_)
        return twain::TWRC_FAILURE;
    enabled_ = true;
    if (message == twain::MSG_ENABLEDSUIONLY) {
        if (openSource_->setupAnswer != 0)
            send(openSource_->setupAnswer);
        return twain::TWRC_SUCCESS;
    }
    return enable();
}

uint16_t ScriptedDsm::enable() {
    pageIndex_ = 0;
    stripIndex_ = 0;
    transferPending_ = !openSource_->pages.empty() && openSource_->readyMessages > 0;
    for (int message = 0; message < openSource_->readyMessages; ++message)
        sendReady();
    return twain::TWRC_SUCCESS;
}

void ScriptedDsm::sendReady() {
    if (openSource_->readyFrom == ReadyFrom::otherThread)
        sendFromOtherThread(twain::MSG_XFERREADY);
    else
        send(twain::MSG_XFERREADY);
}

uint16_t ScriptedDsm::answerPendingTransfers(uint16_t message, TW_PENDINGXFERS& pending) {
    if (message == twain::MSG_RESET) {
        transferPending_ = false;
        pending = {};
        return twain::TWRC_SUCCESS;
    }
    const ScriptedPage* ended = page();
    if (ended == nullptr || ended->endCode != twain::TWRC_SUCCESS)
        return ended != nullptr ? ended->endCode : twain::TWRC_FAILURE;
    ++pageIndex_;
    stripIndex_ = 0;
    const size_t left =
        pageIndex_ < openSource_->pages.size() ? openSource_->pages.size() - pageIndex_ : size_t{0};
    pending.Count = openSource_->endlessPages ? uint16_t{0xffff} : static_cast<uint16_t>(left);
    transferPending_ = pending.Count != 0;
    return twain::TWRC_SUCCESS;
}

uint16_t ScriptedDsm::answerImage(const Triplet& triplet, TW_MEMREF data) {
    if (triplet == setupFileXfer && openSource_ != nullptr) {
        auto& setup = *static_cast<TW_SETUPFILEXFER*>(data);
        const std::string& file = openSource_->fileOfFileTransfer;
        setup.FileName[0] = static_cast<uint8_t>(std::min<size_t>(file.size(), 255));
        std::copy_n(file.begin(), setup.FileName[0], setup.FileName.begin() + 1);
        return twain::TWRC_SUCCESS;
    }
    const ScriptedPage* current = page();
    if (current == nullptr)
        return twain::TWRC_FAILURE;
    switch (triplet.type) {
    case twain::DAT_IMAGEINFO:
        if (current->infoCode == twain::TWRC_SUCCESS)
            *static_cast<TW_IMAGEINFO*>(data) = current->info;
        return current->infoCode;
    case twain::DAT_SETUPMEMXFER:
        *static_cast<TW_SETUPMEMXFER*>(data) = {4096, 1U << 24U, 65536};
        return twain::TWRC_SUCCESS;
    case twain::DAT_IMAGEMEMXFER:
        return answerStrip(*static_cast<TW_IMAGEMEMXFER*>(data));
    case twain::DAT_IMAGENATIVEXFER:
        return answerNative(*static_cast<TW_HANDLE*>(data));
    case twain::DAT_IMAGEFILEXFER:
        return twain::TWRC_XFERDONE;
    default:
        return twain::TWRC_FAILURE;
    }
}

uint16_t ScriptedDsm::answerStrip(TW_IMAGEMEMXFER& record) {
    const ScriptedPage* current = page();
    if (current->strips.empty())
        return twain::TWRC_FAILURE;
    const ScriptedStrip& strip = current->strips[std::min(stripIndex_, current->strips.size() - 1)];
    ++stripIndex_;
    record.YOffset = strip.yOffset.value_or(record.YOffset);
    record.Rows = strip.rows.value_or(record.Rows);
    record.BytesPerRow = strip.bytesPerRow.value_or(record.BytesPerRow);
    const size_t count = std::min<size_t>(strip.bytes.size(), record.Memory.Length);
    if (count > 0)
        std::memcpy(record.Memory.TheMem, strip.bytes.data(), count);
    record.BytesWritten = static_cast<uint32_t>(count);
    return strip.code;
}

uint16_t ScriptedDsm::answerNative(TW_HANDLE& handle) {
    const std::vector<uint8_t>& picture = page()->nativePicture;
    if (picture.empty())
        return twain::TWRC_FAILURE;
    handle = std::malloc(picture.size());
    std::memcpy(handle, picture.data(), picture.size());
    return twain::TWRC_XFERDONE;
}

} // namespace paperline::test

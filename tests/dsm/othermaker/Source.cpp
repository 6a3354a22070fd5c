// Another maker's data source: two grey pages of 20 x 10 pixels, in strips of four rows. Built
// several times with different OTHERMAKER_* definitions:
//   OTHERMAKER_PRODUCT        its product name
//   OTHERMAKER_MANUFACTURER   its manufacturer
//   OTHERMAKER_OWN_THREAD     reports the first page from a thread of its own, else from inside
//                             MSG_ENABLEDS
//   OTHERMAKER_REFUSES        answers failure to everything
//   OTHERMAKER_OPEN_FAILS     answers failure to MSG_OPENDS
//   OTHERMAKER_SHARED         lets several applications open it
//   OTHERMAKER_ENDLESS_NAMES  fills its 34-byte strings without a zero
#include "Twain2.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#ifndef OTHERMAKER_PRODUCT
#define OTHERMAKER_PRODUCT "Endless"
#endif
#ifndef OTHERMAKER_MANUFACTURER
#define OTHERMAKER_MANUFACTURER "Othermaker"
#endif

namespace {

#ifdef OTHERMAKER_OWN_THREAD
constexpr bool ownThread = true;
#else
constexpr bool ownThread = false;
#endif
#ifdef OTHERMAKER_REFUSES
constexpr bool refuses = true;
#else
constexpr bool refuses = false;
#endif
#ifdef OTHERMAKER_OPEN_FAILS
constexpr bool openFails = true;
#else
constexpr bool openFails = false;
#endif

#ifdef OTHERMAKER_SHARED
constexpr bool shared = true;
#else
constexpr bool shared = false;
#endif

constexpr TW_UINT32 width = 20, height = 10, rowsOfStrip = 4;
constexpr int pagesOfBatch = 2;

struct Session {
    int state = 3; // the standard's numbers
    int pagesLeft = 0;
    TW_UINT32 nextRow = 0;
    TW_UINT16 condition = TWCC_SUCCESS;
    TW_UINT16 transferMechanism = TWSX_NATIVE;
    TW_IDENTITY* application = nullptr; // kept by address, as sources may
    TW_IDENTITY own{};
    TW_ENTRYPOINT manager{};
    TW_SETUPFILEXFER file{};
    std::thread reporter;
};

Session session;

TW_UINT16 fail(TW_UINT16 condition) {
    session.condition = condition;
    return TWRC_FAILURE;
}

TW_IDENTITY ownIdentity() {
    TW_IDENTITY identity{};
    identity.Version = {2, 5, 13, 1, "2.5 of test"};
    identity.ProtocolMajor = 2;
    identity.ProtocolMinor = 4;
    identity.SupportedGroups = DG_CONTROL | DG_IMAGE | DF_DS2;
#ifdef OTHERMAKER_ENDLESS_NAMES
    std::memset(identity.Version.Info, 'V', sizeof(TW_STR32));
    std::memset(identity.Manufacturer, 'M', sizeof(TW_STR32));
    std::memset(identity.ProductFamily, 'F', sizeof(TW_STR32));
    std::memset(identity.ProductName, 'P', sizeof(TW_STR32));
#else
    std::strcpy(identity.Manufacturer, OTHERMAKER_MANUFACTURER);
    std::strcpy(identity.ProductFamily, "Test sources");
    std::strcpy(identity.ProductName, OTHERMAKER_PRODUCT);
#endif
    return identity;
}

unsigned char pixel(TW_UINT32 row, TW_UINT32 column) {
    const TW_UINT32 page = static_cast<TW_UINT32>(pagesOfBatch - session.pagesLeft);
    return static_cast<unsigned char>(100 * page + (row * width + column) % 100);
}

void report(TW_UINT16 message) {
    if (session.manager.DSM_Entry != nullptr)
        session.manager.DSM_Entry(
            &session.own, session.application, DG_CONTROL, DAT_NULL, message, nullptr);
}

TW_UINT16 openOrClose(TW_IDENTITY* application, TW_UINT16 message, TW_IDENTITY* identity) {
    switch (message) {
    case MSG_GET:
        *identity = ownIdentity();
        return TWRC_SUCCESS;
    case MSG_OPENDS:
        if (openFails)
            return fail(TWCC_MAXCONNECTIONS);
        if (session.state != 3 && !shared)
            return fail(TWCC_SEQERROR);
        session.state = 4;
        session.application = application;
        session.own = *identity;
        return TWRC_SUCCESS;
    case MSG_CLOSEDS:
        if (session.state != 4 && !shared)
            return fail(TWCC_SEQERROR);
        session.state = 3;
        return TWRC_SUCCESS;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

TW_UINT16 enable(TW_UINT16 message, TW_USERINTERFACE* userInterface) {
    switch (message) {
    case MSG_ENABLEDS:
        if (session.state != 4 || userInterface == nullptr)
            return fail(TWCC_SEQERROR);
        session.state = 6;
        session.pagesLeft = pagesOfBatch;
        session.nextRow = 0;
        userInterface->ModalUI = 0;
        if (ownThread)
            session.reporter = std::thread([] { report(MSG_XFERREADY); });
        else
            report(MSG_XFERREADY);
        return TWRC_SUCCESS;
    case MSG_ENABLEDSUIONLY:
        if (session.state != 4)
            return fail(TWCC_SEQERROR);
        session.state = 5;
        report(userInterface->ShowUI != 0 ? MSG_CLOSEDSOK : MSG_CLOSEDSREQ);
        return TWRC_SUCCESS;
    case MSG_DISABLEDS:
        if (session.state != 5)
            return fail(TWCC_SEQERROR);
        if (session.reporter.joinable())
            session.reporter.join();
        session.state = 4;
        return TWRC_SUCCESS;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

TW_UINT16 pending(TW_UINT16 message, TW_PENDINGXFERS* transfers) {
    if (message == MSG_GET) {
        transfers->Count = static_cast<TW_UINT16>(session.pagesLeft);
        return TWRC_SUCCESS;
    }
    if (session.state < 6)
        return fail(TWCC_SEQERROR);
    session.pagesLeft = message == MSG_RESET ? 0 : session.pagesLeft - 1;
    session.nextRow = 0;
    transfers->Count = static_cast<TW_UINT16>(session.pagesLeft);
    transfers->EOJ = 0;
    session.state = session.pagesLeft > 0 ? 6 : 5;
    return TWRC_SUCCESS;
}

TW_UINT16 imageInfo(TW_IMAGEINFO* info) {
    if (session.state < 6)
        return fail(TWCC_SEQERROR);
    *info = {};
    info->XResolution = {300, 0};
    info->YResolution = {150, 32768};
    info->ImageWidth = width;
    info->ImageLength = height;
    info->SamplesPerPixel = 1;
    info->BitsPerSample[0] = 8;
    info->BitsPerPixel = 8;
    info->PixelType = 1;
    return TWRC_SUCCESS;
}

TW_UINT16 memoryTransfer(TW_IMAGEMEMXFER* transfer) {
    if (session.state < 6 || session.nextRow >= height)
        return fail(TWCC_SEQERROR);
    session.state = 7;
    const TW_UINT32 room = transfer->Memory.Length / width;
    const TW_UINT32 rows = std::min({rowsOfStrip, room, height - session.nextRow});
    if (rows == 0)
        return fail(TWCC_BADVALUE);
    auto* target = static_cast<unsigned char*>(transfer->Memory.TheMem);
    for (TW_UINT32 row = 0; row < rows; ++row)
        for (TW_UINT32 column = 0; column < width; ++column)
            *target++ = pixel(session.nextRow + row, column);
    transfer->Compression = 0;
    transfer->BytesPerRow = width;
    transfer->Columns = width;
    transfer->Rows = rows;
    transfer->XOffset = 0;
    transfer->YOffset = session.nextRow;
    transfer->BytesWritten = rows * width;
    session.nextRow += rows;
    return session.nextRow == height ? TWRC_XFERDONE : TWRC_SUCCESS;
}

TW_UINT16 nativeTransfer(TW_HANDLE* handle) {
    if (session.state != 6)
        return fail(TWCC_SEQERROR);
    session.state = 7;
    static constexpr char picture[] = "a picture of another maker";
    *handle = session.manager.DSM_MemAllocate(sizeof(picture));
    std::memcpy(session.manager.DSM_MemLock(*handle), picture, sizeof(picture));
    session.manager.DSM_MemUnlock(*handle);
    return TWRC_XFERDONE;
}

TW_UINT16 setupFile(TW_UINT16 message, TW_SETUPFILEXFER* setup) {
    if (message == MSG_SET) {
        session.file = *setup;
        return TWRC_SUCCESS;
    }
    *setup = session.file;
    if (message == MSG_GETDEFAULT || session.file.FileName[0] == '\0') {
        std::strcpy(setup->FileName, "/nowhere/default.tif");
        setup->Format = 0;
    }
    return TWRC_SUCCESS;
}

TW_UINT16 capability(TW_UINT16 message, TW_CAPABILITY* request) {
    if (request->Cap != ICAP_XFERMECH)
        return fail(TWCC_BADPROTOCOL);
    if (message == MSG_SET) {
        const auto* value =
            static_cast<const TW_ONEVALUE*>(session.manager.DSM_MemLock(request->hContainer));
        session.transferMechanism = static_cast<TW_UINT16>(value->Item);
        session.manager.DSM_MemUnlock(request->hContainer);
        return TWRC_SUCCESS;
    }
    request->ConType = TWON_ONEVALUE;
    request->hContainer = session.manager.DSM_MemAllocate(sizeof(TW_ONEVALUE));
    auto* value = static_cast<TW_ONEVALUE*>(session.manager.DSM_MemLock(request->hContainer));
    value->ItemType = TWTY_UINT16;
    value->Item = session.transferMechanism;
    session.manager.DSM_MemUnlock(request->hContainer);
    return TWRC_SUCCESS;
}

TW_UINT16 extendedInfo(TW_EXTIMAGEINFO* information) {
    for (TW_UINT32 i = 0; i < information->NumInfos; ++i) {
        TW_INFO& info = information->Info[i];
        info.ItemType = TWTY_UINT16;
        info.NumItems = 1;
        info.ReturnCode = TWRC_SUCCESS;
        info.Item = 1000u + info.InfoID;
    }
    return TWRC_SUCCESS;
}

TW_UINT16 control(TW_IDENTITY* application, TW_UINT16 type, TW_UINT16 message, TW_MEMREF data) {
    switch (type) {
    case DAT_IDENTITY:
        return openOrClose(application, message, static_cast<TW_IDENTITY*>(data));
    case DAT_ENTRYPOINT:
        session.manager = *static_cast<TW_ENTRYPOINT*>(data);
        return TWRC_SUCCESS;
    case DAT_STATUS: {
        auto* status = static_cast<TW_STATUS*>(data);
        status->ConditionCode = session.condition;
        status->Data = 0;
        session.condition = TWCC_SUCCESS;
        return TWRC_SUCCESS;
    }
    case DAT_USERINTERFACE:
        return enable(message, static_cast<TW_USERINTERFACE*>(data));
    case DAT_PENDINGXFERS:
        return pending(message, static_cast<TW_PENDINGXFERS*>(data));
    case DAT_SETUPMEMXFER:
        *static_cast<TW_SETUPMEMXFER*>(data) = {width, width * height, width * rowsOfStrip};
        return TWRC_SUCCESS;
    case DAT_SETUPFILEXFER:
        return setupFile(message, static_cast<TW_SETUPFILEXFER*>(data));
    case DAT_CAPABILITY:
        return capability(message, static_cast<TW_CAPABILITY*>(data));
    case DAT_EVENT:
        static_cast<TW_EVENT*>(data)->TWMessage = MSG_NULL;
        return TWRC_NOTDSEVENT;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

TW_UINT16 image(TW_UINT16 type, TW_MEMREF data) {
    switch (type) {
    case DAT_IMAGEINFO:
        return imageInfo(static_cast<TW_IMAGEINFO*>(data));
    case DAT_IMAGEMEMXFER:
        return memoryTransfer(static_cast<TW_IMAGEMEMXFER*>(data));
    case DAT_IMAGENATIVEXFER:
        return nativeTransfer(static_cast<TW_HANDLE*>(data));
    case DAT_EXTIMAGEINFO:
        return extendedInfo(static_cast<TW_EXTIMAGEINFO*>(data));
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

// One line per call, into the file that OTHERMAKER_LOG names.
void note(TW_UINT32 group, TW_UINT16 type, TW_UINT16 message) {
    const char* name = std::getenv("OTHERMAKER_LOG");
    std::FILE* file = name != nullptr ? std::fopen(name, "a") : nullptr;
    if (file == nullptr)
        return;
    std::fprintf(file, "%s %u %04x %04x\n", OTHERMAKER_PRODUCT, group, type, message);
    std::fclose(file);
}

} // namespace

extern "C" __attribute__((visibility("default"))) TW_UINT16
DS_Entry(TW_IDENTITY* origin, TW_UINT32 group, TW_UINT16 type, TW_UINT16 message, TW_MEMREF data) {
    note(group, type, message);
    if (refuses)
        return fail(TWCC_BUMMER);
    if (group == DG_CONTROL)
        return control(origin, type, message, data);
    return group == DG_IMAGE ? image(type, data) : fail(TWCC_BADPROTOCOL);
}

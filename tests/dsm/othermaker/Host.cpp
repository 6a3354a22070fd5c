// Another maker's scanning program.
//
//   othermaker_host MANAGER list
//   othermaker_host MANAGER scan PRODUCT [--before-open] [--callback2] [--events] [--buffer BYTES]
//                                        [--save FOLDER]
//
// MANAGER is the data source manager's library. "list" prints a line per source. "scan" scans all
// pages of the source without its user interface and prints a line per page; --save also writes
// them as FOLDER/page-1.pnm and so on. --before-open registers the callback before a source is
// open,
// --callback2 uses the newer record, --events registers none and polls with DAT_EVENT. Exit 0: all
// went as the standard says; 1: it did not, the reason is on standard error; 2: usage.
#include "Twain2.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Options {
    std::string manager, command, product, saveFolder;
    bool beforeOpen = false, callback2 = false, events = false;
    TW_UINT32 bufferBytes = 0; // 0: what the source prefers
};

// Messages from the source, handed from whatever thread they arrive on to the main one.
struct Inbox {
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<TW_UINT16> messages;
};

Inbox inbox;
constexpr TW_UINTPTR refCon = 0x12345678;
std::string wantedProduct;

[[noreturn]] void stop(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::_Exit(1);
}

TW_UINT16 receive(TW_IDENTITY* source,
                  TW_IDENTITY* application,
                  TW_UINT32 group,
                  TW_UINT16 type,
                  TW_UINT16 message,
                  TW_MEMREF data) {
    if (group != DG_CONTROL || type != DAT_NULL || source == nullptr || application == nullptr)
        stop("the callback got a triplet that is no message");
    if (wantedProduct != source->ProductName)
        stop(std::string("the callback got a message of ") + source->ProductName);
    if (reinterpret_cast<TW_UINTPTR>(data) != refCon)
        stop("the callback did not get its reference constant");
    const std::lock_guard lock(inbox.mutex);
    inbox.messages.push_back(message);
    inbox.arrived.notify_all();
    return TWRC_SUCCESS;
}

class Session {
public:
    explicit Session(const Options& options) : options_(options) {
        void* library = dlopen(options.manager.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            stop(std::string("no manager: ") + dlerror());
        entry_ = reinterpret_cast<DSMENTRYPROC>(dlsym(library, "DSM_Entry"));
        if (entry_ == nullptr)
            stop("the manager has no DSM_Entry");
        application_.Version = {3, 1, 13, 1, "3.1"};
        application_.ProtocolMajor = 2;
        application_.ProtocolMinor = 4;
        application_.SupportedGroups = DG_CONTROL | DG_IMAGE | DF_APP2;
        std::strcpy(application_.Manufacturer, "Othermaker");
        std::strcpy(application_.ProductFamily, "Test programs");
        std::strcpy(application_.ProductName, "Host");
        require(manager(DAT_PARENT, MSG_OPENDSM, nullptr), "MSG_OPENDSM");
        if ((application_.SupportedGroups & DF_DSM2) != 0) {
            memory_.Size = sizeof(memory_);
            require(manager(DAT_ENTRYPOINT, MSG_GET, &memory_), "DAT_ENTRYPOINT");
        }
    }

    ~Session() { require(manager(DAT_PARENT, MSG_CLOSEDSM, nullptr), "MSG_CLOSEDSM"); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void list() {
        TW_IDENTITY identity{};
        for (TW_UINT16 code = manager(DAT_IDENTITY, MSG_GETFIRST, &identity); code == TWRC_SUCCESS;
             code = manager(DAT_IDENTITY, MSG_GETNEXT, &identity))
            std::printf(
                "%s|%s|%s\n", identity.Manufacturer, identity.ProductFamily, identity.ProductName);
    }

    void scan() {
        choose();
        if (options_.beforeOpen)
            registerCallback(nullptr);
        require(manager(DAT_IDENTITY, MSG_OPENDS, &source_), "MSG_OPENDS");
        if (!options_.beforeOpen && !options_.events)
            registerCallback(&source_);
        set(CAP_INDICATORS, TWTY_BOOL, 0);
        set(ICAP_XFERMECH, TWTY_UINT16, TWSX_MEMORY);
        TW_USERINTERFACE none{};
        require(source(DAT_USERINTERFACE, MSG_ENABLEDS, &none), "MSG_ENABLEDS");
        if (waitForMessage() != MSG_XFERREADY)
            stop("the source did not report a page first");
        transferPages();
        require(source(DAT_USERINTERFACE, MSG_DISABLEDS, &none), "MSG_DISABLEDS");
        require(manager(DAT_IDENTITY, MSG_CLOSEDS, &source_), "MSG_CLOSEDS");
    }

private:
    TW_UINT16 manager(TW_UINT16 type, TW_UINT16 message, TW_MEMREF data) {
        return entry_(&application_, nullptr, DG_CONTROL, type, message, data);
    }

    TW_UINT16
    source(TW_UINT16 type, TW_UINT16 message, TW_MEMREF data, TW_UINT32 group = DG_CONTROL) {
        return entry_(&application_, &source_, group, type, message, data);
    }

    void require(TW_UINT16 code, const char* what) {
        if (code == TWRC_SUCCESS)
            return;
        TW_STATUS status{};
        manager(DAT_STATUS, MSG_GET, &status);
        stop(std::string(what) + ": return code " + std::to_string(code) + ", condition " +
             std::to_string(status.ConditionCode));
    }

    void choose() {
        wantedProduct = options_.product;
        for (TW_UINT16 code = manager(DAT_IDENTITY, MSG_GETFIRST, &source_); code == TWRC_SUCCESS;
             code = manager(DAT_IDENTITY, MSG_GETNEXT, &source_))
            if (wantedProduct == source_.ProductName)
                return;
        stop("no source " + wantedProduct);
    }

    void registerCallback(TW_IDENTITY* destination) {
        TW_CALLBACK first{reinterpret_cast<TW_MEMREF>(&receive), refCon, 0};
        TW_CALLBACK2 second{reinterpret_cast<TW_MEMREF>(&receive), refCon, 0};
        const bool newer = options_.callback2;
        require(entry_(&application_,
                       destination,
                       DG_CONTROL,
                       newer ? DAT_CALLBACK2 : DAT_CALLBACK,
                       MSG_REGISTER_CALLBACK,
                       newer ? static_cast<TW_MEMREF>(&second) : &first),
                "MSG_REGISTER_CALLBACK");
    }

    // Sources may refuse a capability; what they then do is up to them.
    void set(TW_UINT16 capability, TW_UINT16 itemType, TW_UINT32 item) {
        if (memory_.DSM_MemAllocate == nullptr)
            return;
        TW_CAPABILITY request{capability, TWON_ONEVALUE, nullptr};
        request.hContainer = memory_.DSM_MemAllocate(sizeof(TW_ONEVALUE));
        *static_cast<TW_ONEVALUE*>(memory_.DSM_MemLock(request.hContainer)) = {itemType, item};
        memory_.DSM_MemUnlock(request.hContainer);
        source(DAT_CAPABILITY, MSG_SET, &request);
        memory_.DSM_MemFree(request.hContainer);
    }

    TW_UINT16 polledMessage() {
        for (int attempt = 0; attempt < 6000; ++attempt) {
            TW_EVENT event{};
            if (source(DAT_EVENT, MSG_PROCESSEVENT, &event) == TWRC_DSEVENT)
                return event.TWMessage;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        stop("no event came");
    }

    TW_UINT16 waitForMessage() {
        if (options_.events)
            return polledMessage();
        std::unique_lock lock(inbox.mutex);
        if (!inbox.arrived.wait_for(
                lock, std::chrono::minutes(1), [] { return !inbox.messages.empty(); }))
            stop("no message came");
        const TW_UINT16 message = inbox.messages.front();
        inbox.messages.erase(inbox.messages.begin());
        return message;
    }

    void transferPages() {
        TW_PENDINGXFERS pending{};
        int page = 0;
        do {
            transferPage(++page);
            require(source(DAT_PENDINGXFERS, MSG_ENDXFER, &pending), "MSG_ENDXFER");
        } while (pending.Count != 0);
    }

    void transferPage(int page) {
        TW_IMAGEINFO info{};
        require(source(DAT_IMAGEINFO, MSG_GET, &info, DG_IMAGE), "DAT_IMAGEINFO");
        TW_SETUPMEMXFER setup{};
        require(source(DAT_SETUPMEMXFER, MSG_GET, &setup), "DAT_SETUPMEMXFER");
        const TW_UINT32 size = options_.bufferBytes != 0 ? options_.bufferBytes : setup.Preferred;
        std::vector<unsigned char> buffer(size);
        const size_t rowBytes =
            (static_cast<size_t>(info.ImageWidth) * static_cast<size_t>(info.BitsPerPixel) + 7) / 8;
        std::vector<unsigned char> pixels;
        int strips = 0;
        TW_UINT16 code = TWRC_SUCCESS;
        for (; code == TWRC_SUCCESS; ++strips) {
            TW_IMAGEMEMXFER strip{};
            strip.Memory = {TWMF_APPOWNS | TWMF_POINTER, size, buffer.data()};
            code = source(DAT_IMAGEMEMXFER, MSG_GET, &strip, DG_IMAGE);
            if (code != TWRC_SUCCESS && code != TWRC_XFERDONE)
                require(code, "DAT_IMAGEMEMXFER");
            if (uint64_t{strip.Rows} * strip.BytesPerRow > size || strip.BytesPerRow < rowBytes)
                stop("a strip is larger than its buffer, or its rows are too short");
            for (TW_UINT32 row = 0; row < strip.Rows; ++row) {
                const unsigned char* start = buffer.data() + size_t{row} * strip.BytesPerRow;
                pixels.insert(pixels.end(), start, start + rowBytes);
            }
        }
        if (pixels.size() != rowBytes * static_cast<size_t>(info.ImageLength))
            stop("a page has not as many rows as it said");
        print(page, info, strips, pixels);
        save(page, info, pixels);
    }

    static void print(int page,
                      const TW_IMAGEINFO& info,
                      int strips,
                      const std::vector<unsigned char>& pixels) {
        uint32_t sum = 0;
        for (const unsigned char byte : pixels)
            sum = sum * 31 + byte;
        std::printf("page %d: %d x %d, %d bits, %g x %g dpi, %d strips, sum %08x\n",
                    page,
                    info.ImageWidth,
                    info.ImageLength,
                    info.BitsPerPixel,
                    info.XResolution.Whole + info.XResolution.Frac / 65536.0,
                    info.YResolution.Whole + info.YResolution.Frac / 65536.0,
                    strips,
                    sum);
    }

    // One-bit pages have 0 as black, the other way round in the file.
    void save(int page, const TW_IMAGEINFO& info, std::vector<unsigned char> pixels) const {
        if (options_.saveFolder.empty())
            return;
        const std::string name = options_.saveFolder + "/page-" + std::to_string(page) + ".pnm";
        std::FILE* file = std::fopen(name.c_str(), "wb");
        if (file == nullptr)
            stop("cannot write " + name);
        const int bits = info.BitsPerPixel;
        std::fprintf(file,
                     bits == 1 ? "P4\n%d %d\n"
                               : (bits == 8 ? "P5\n%d %d\n255\n" : "P6\n%d %d\n255\n"),
                     info.ImageWidth,
                     info.ImageLength);
        if (bits == 1)
            for (unsigned char& byte : pixels)
                byte = static_cast<unsigned char>(~byte);
        const bool written = std::fwrite(pixels.data(), 1, pixels.size(), file) == pixels.size();
        if (std::fclose(file) != 0 || !written)
            stop("cannot write " + name);
    }

    const Options& options_;
    DSMENTRYPROC entry_ = nullptr;
    TW_IDENTITY application_{};
    TW_IDENTITY source_{};
    TW_ENTRYPOINT memory_{};
};

bool read(int count, char** arguments, Options& options) {
    if (count < 3)
        return false;
    options.manager = arguments[1];
    options.command = arguments[2];
    if (options.command == "list")
        return count == 3;
    if (options.command != "scan" || count < 4)
        return false;
    options.product = arguments[3];
    for (int i = 4; i < count; ++i) {
        const std::string option = arguments[i];
        const bool hasValue = i + 1 < count;
        if (option == "--before-open")
            options.beforeOpen = true;
        else if (option == "--callback2")
            options.callback2 = true;
        else if (option == "--events")
            options.events = true;
        else if (option == "--buffer" && hasValue)
            options.bufferBytes = static_cast<TW_UINT32>(std::strtoul(arguments[++i], nullptr, 10));
        else if (option == "--save" && hasValue)
            options.saveFolder = arguments[++i];
        else
            return false;
    }
    return true;
}

} // namespace

int main(int count, char** arguments) {
    Options options;
    if (!read(count, arguments, options)) {
        std::fprintf(stderr, "usage: othermaker_host MANAGER list | scan PRODUCT [options]\n");
        return 2;
    }
    Session session(options);
    if (options.command == "list")
        session.list();
    else
        session.scan();
    return 0;
}

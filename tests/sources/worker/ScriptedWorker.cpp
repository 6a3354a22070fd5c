// A worker whose device does what its name says: words with blanks between, each a trait.
//   pages=N rows=N width=N bits=N   what it scans (3 pages of 10 rows, 20 pixels, 8 bits)
//   unknown-height                  heights are told by the last row only
//   open=STATUS end=STATUS          how it opens, how the batch ends after its pages
//   crash=N hang=N                  in the middle of page N; page 0 is open, -1 the letting go,
//                                   -2 the end of the batch
//   slow=MILLISECONDS               before each row
//   child                           a forked process that lives on holds the socket too
//   chatter                         prints on standard output
// A name that starts with "raw " is no device at all: the program speaks the protocol wrongly.
#include "sources/worker/PageBuffer.h"
#include "sources/worker/Protocol.h"
#include "sources/worker/WorkerProgram.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <thread>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace paperline;
using namespace paperline::sources;

namespace {

class ScriptedDevice final : public ScanDevice {
public:
    explicit ScriptedDevice(const std::string& script) {
        std::istringstream words(script);
        for (std::string word; words >> word;) {
            const size_t equals = std::min(word.find('='), word.size());
            const std::string value = equals < word.size() ? word.substr(equals + 1) : "1";
            traits_[word.substr(0, equals)] = std::atoi(value.c_str());
        }
    }
    ~ScriptedDevice() override { misbehaveAt(-1); }

    ScanStatus open() override {
        if (has("chatter"))
            std::puts("chatter on standard output");
        if (has("child") && fork() == 0) {
            std::this_thread::sleep_for(std::chrono::seconds(100));
            _exit(0);
        }
        misbehaveAt(0);
        error_ = "scripted to stay shut";
        return static_cast<ScanStatus>(trait("open", 0));
    }

    std::vector<OptionDescriptor> options() override {
        OptionDescriptor mode;
        mode.name = "mode";
        mode.title = "Scan\tmode";
        mode.value = mode_;
        mode.choices = {"Lineart", "Gray", "Color"};
        OptionDescriptor resolution;
        resolution.name = "resolution";
        resolution.kind = OptionKind::integer;
        resolution.unit = "dpi";
        resolution.value = resolution_;
        resolution.hasRange = true;
        resolution.minimum = 50;
        resolution.maximum = 600;
        resolution.step = 0.5;
        return {mode, resolution};
    }

    ScanStatus setOption(const std::string& name, const std::string& value) override {
        error_.clear();
        if (name == "mode" && value != "Blue") {
            mode_ = value;
            return ScanStatus::good;
        }
        if (name == "resolution") {
            resolution_ = value;
            return ScanStatus::good;
        }
        error_ = "Scripted to refuse.";
        return ScanStatus::invalid;
    }

    ScanStatus start() override {
        page_ = 0;
        cancelled_ = false;
        return ScanStatus::good;
    }

    ScanStatus readPage(PageSink& sink) override {
        const int rowCount = trait("rows", 10);
        if (page_ == trait("pages", 3)) {
            error_ = "scripted end";
            return static_cast<ScanStatus>(trait("end", static_cast<int>(ScanStatus::noMorePages)));
        }
        ++page_;
        PageFormat format;
        format.widthPixels = trait("width", 20);
        format.heightPixels = has("unknown-height") ? -1 : rowCount;
        format.bitsPerPixel = trait("bits", 8);
        format.horizontalDpi = 300;
        format.verticalDpi = 150;
        if (!sink.begin(format))
            return ScanStatus::noMemory;
        for (int row = 0; row < rowCount; ++row) {
            if (row == rowCount / 2)
                misbehaveAt(page_);
            std::this_thread::sleep_for(std::chrono::milliseconds(trait("slow", 0)));
            if (cancelled_)
                return ScanStatus::cancelled;
            const std::span<uint8_t> room = sink.rows(row, 1);
            if (room.empty())
                return ScanStatus::noMemory;
            std::fill(room.begin(), room.end(), static_cast<uint8_t>(page_ * 16 + row));
        }
        sink.finish(rowCount);
        return ScanStatus::good;
    }

    void cancel() override { cancelled_ = true; }
    void stop() override { misbehaveAt(-2); }
    std::string errorText() const override { return error_; }

private:
    bool has(const std::string& name) const { return traits_.count(name) != 0; }
    int trait(const std::string& name, int otherwise) const {
        const auto found = traits_.find(name);
        return found == traits_.end() ? otherwise : found->second;
    }
    void misbehaveAt(int place) const {
        if (has("crash") && trait("crash", 0) == place) {
            const rlimit noCore{0, 0};
            setrlimit(RLIMIT_CORE, &noCore);
            std::signal(SIGSEGV, SIG_DFL);
            std::raise(SIGSEGV);
        }
        if (has("hang") && trait("hang", 0) == place)
            std::this_thread::sleep_for(std::chrono::hours(1));
    }

    std::map<std::string, int> traits_;
    std::string mode_ = "Gray", resolution_ = "300", error_;
    int page_ = 0;
    std::atomic<bool> cancelled_{false};
};

void sendOut(const MessageWriter& message, const Descriptor& memory = Descriptor()) {
    (void)sendMessage(workerSocketDescriptor, message.bytes(), memory.number());
}

void sendHello(uint32_t version, const Descriptor& memory) {
    MessageWriter hello(MessageType::hello);
    hello.putNumber(version);
    sendOut(hello, memory);
}

void sendAnswer(MessageType request) {
    MessageWriter answer(MessageType::answer);
    answer.putNumber(request);
    answer.putNumber(uint32_t{0});
    answer.putText("");
    sendOut(answer);
}

void sendPage(uint32_t index, const PageFormat& format, const Descriptor& memory) {
    MessageWriter page(MessageType::page);
    page.putNumber(index);
    putPageFormat(page, format);
    sendOut(page, memory);
}

// One page of 10 by 20 pixels whose message is wrong in the way named.
void sendFalsePage(const std::string& fault) {
    PageFormat format;
    format.widthPixels = 10;
    format.heightPixels = 20;
    if (fault == "larger-than-its-memory")
        format.heightPixels = 21;
    if (fault == "gigantic")
        format.widthPixels = format.heightPixels = INT32_MAX;
    if (fault == "negative")
        format.heightPixels = -1;
    if (fault == "odd-depth")
        format.bitsPerPixel = 7;
    Descriptor memory = makeSharedMemory("page", 200);
    if (fault == "without-memory")
        memory = {};
    if (fault == "unsealed") {
        memory = Descriptor(memfd_create("loose", 0));
        if (ftruncate(memory.number(), 4096) != 0)
            return;
    }
    sendPage(fault == "unknown-buffer" ? 7 : 0, format, memory);
    if (fault == "same-buffer-twice")
        sendPage(0, format, Descriptor());
}

// Something wrong after a page that is right.
void sendFalseEvent(const std::string& fault) {
    if (fault == "cut-off") {
        MessageWriter page(MessageType::page);
        page.putNumber(uint32_t{1});
        sendOut(page);
    } else if (fault == "unknown-type") {
        sendOut(MessageWriter(static_cast<MessageType>(77)));
    } else if (fault == "good-end") {
        MessageWriter end(MessageType::batchEnd);
        end.putNumber(uint32_t{0});
        end.putText("");
        sendOut(end);
    } else if (fault == "one-byte") {
        (void)send(workerSocketDescriptor, "x", 1, 0);
    } else if (fault == "overlong") {
        const std::vector<std::byte> bytes(maximumMessageBytes + 1);
        (void)send(workerSocketDescriptor, bytes.data(), bytes.size(), 0);
    }
}

int speakWrongly(const std::string& fault) {
    if (fault == "version")
        sendHello(workerProtocolVersion + 1, makeSharedMemory("pulse", 4096));
    else if (fault == "no-pulse")
        sendHello(workerProtocolVersion, Descriptor());
    else
        sendHello(workerProtocolVersion, makeSharedMemory("pulse", 4096));
    ReceivedMessage message;
    while (receiveMessage(workerSocketDescriptor, std::chrono::seconds(20), message) ==
           SocketResult::done) {
        sendAnswer(fault == "wrong-answer" ? MessageType::stop : message.type);
        if (message.type == MessageType::start) {
            sendFalsePage(fault);
            sendFalseEvent(fault);
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const WorkerArguments arguments = parseWorkerArguments(argc, argv);
    if (arguments.device.starts_with("raw "))
        return speakWrongly(arguments.device.substr(4));
    ScriptedDevice device(arguments.device);
    return runWorker(device, argc, argv);
}

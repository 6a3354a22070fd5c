#include "sources/sane/DeviceListing.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "sources/framework/LocaleFreeText.h"
#include "sources/sane/LibsaneScanner.h"
#include "sources/worker/WorkerProcess.h"

#include <algorithm>
#include <cstdlib>

#include <unistd.h>

namespace paperline::sources {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds listTime{30000};    // all backends together, network searches included
constexpr milliseconds backendTime{12000}; // one backend
constexpr size_t maximumDevices = 1000;
constexpr const char* defaultFolders = ".:/etc/sane.d";

std::vector<std::string> configurationFolders() {
    const char* set = std::getenv("SANE_CONFIG_DIR");
    std::string folders = set != nullptr && *set != '\0' ? set : defaultFolders;
    // A colon at the end appends the default folders.
    if (folders.ends_with(':'))
        folders += defaultFolders;
    std::vector<std::string> parts;
    for (std::string_view rest = folders; !rest.empty();)
        if (const std::string_view part = takePart(rest, ':'); !part.empty())
            parts.emplace_back(part);
    return parts;
}

void addBackends(std::vector<std::string>& names, const std::string& path) {
    constexpr uint64_t maximumBytes = 1 << 20;
    const auto text = readTextFile(path, maximumBytes);
    if (!text)
        return;
    for (std::string& name : backendLines(*text))
        if (std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(std::move(name));
}

// Nothing unless the process lists its devices to the end in time.
std::optional<std::vector<SaneDeviceEntry>> listInProcess(const std::string& program,
                                                          milliseconds timeout) {
    WorkerProcess process;
    std::string error;
    if (!process.start(program, {"--list-devices"}, error))
        return std::nullopt;
    const auto end = std::chrono::steady_clock::now() + std::min(timeout, workerTimeout());
    std::vector<SaneDeviceEntry> devices;
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
        ReceivedMessage message;
        if (left.count() <= 0 ||
            receiveMessage(process.socket(), left, message) != SocketResult::done)
            return std::nullopt;
        MessageReader reader(message.body);
        if (message.type == MessageType::answer) {
            // Whether the process ends well does not matter any more.
            return reportedStatus(reader.number<uint32_t>()) == ScanStatus::good && reader.whole()
                       ? std::optional(std::move(devices))
                       : std::nullopt;
        }
        SaneDeviceEntry device{reader.text(), {}, {}};
        device.vendor = reader.text();
        device.model = reader.text();
        if (message.type != MessageType::device || !reader.whole() ||
            devices.size() >= maximumDevices)
            return std::nullopt;
        devices.push_back(std::move(device));
    }
}

// A SANE configuration that enables a single backend and otherwise falls back on the user's.
class SingleBackend {
public:
    SingleBackend() {
        if (const char* set = std::getenv("SANE_CONFIG_DIR"))
            before_ = set;
        const char* temporary = std::getenv("TMPDIR");
        folder_ = std::string(temporary != nullptr && *temporary == '/' ? temporary : "/tmp") +
                  "/paperline-sane-XXXXXX";
        if (mkdtemp(folder_.data()) == nullptr)
            folder_.clear();
        // The empty folder hides the dll.d of the other folders.
        else if (createFolder(folder_ + "/dll.d"))
            setenv("SANE_CONFIG_DIR", (folder_ + ":" + before_.value_or(std::string())).c_str(), 1);
    }
    ~SingleBackend() {
        if (before_)
            setenv("SANE_CONFIG_DIR", before_->c_str(), 1);
        else
            unsetenv("SANE_CONFIG_DIR");
        if (!folder_.empty())
            removePath(folder_);
    }
    SingleBackend(const SingleBackend&) = delete;
    SingleBackend& operator=(const SingleBackend&) = delete;

    bool choose(const std::string& backend) const {
        const std::string line = backend + "\n";
        return !folder_.empty() &&
               writeFile(folder_ + "/dll.conf", std::vector<uint8_t>(line.begin(), line.end()));
    }

private:
    std::string folder_;
    std::optional<std::string> before_;
};

} // namespace

std::vector<std::string> backendLines(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        std::string_view line = takePart(text, '\n');
        line = line.substr(0, line.find_first_of("#\r"));
        line = trimmed(line);
        if (!line.empty())
            names.emplace_back(line.substr(0, line.find_first_of(" \t")));
    }
    return names;
}

std::vector<std::string> configuredBackends() {
    std::vector<std::string> names;
    // SANE reads the first file and the first folder that it finds.
    bool hasFile = false, hasFolder = false;
    for (const std::string& folder : configurationFolders()) {
        if (!hasFile && fileExists(folder + "/dll.conf")) {
            hasFile = true;
            addBackends(names, folder + "/dll.conf");
        }
        if (!hasFolder && folderExists(folder + "/dll.d")) {
            hasFolder = true;
            for (const std::string& name : folderEntries(folder + "/dll.d"))
                if (!name.starts_with('.'))
                    addBackends(names, folder + "/dll.d/" + name);
        }
    }
    return names;
}

std::optional<DeviceListing> listDevicesApart(const std::string& program) {
    if (auto devices = listInProcess(program, listTime))
        return DeviceListing{std::move(*devices), {}};
    const std::vector<std::string> backends = configuredBackends();
    DeviceListing listing;
    const SingleBackend single;
    for (const std::string& backend : backends) {
        auto devices = single.choose(backend) ? listInProcess(program, backendTime) : std::nullopt;
        if (devices)
            listing.devices.insert(listing.devices.end(), devices->begin(), devices->end());
        else
            listing.failedBackends.insert(backend);
    }
    if (listing.failedBackends.size() == backends.size())
        return std::nullopt;
    return listing;
}

int sendDeviceList() {
    const auto devices = listSaneDevices();
    for (const SaneDeviceEntry& device : devices.value_or(std::vector<SaneDeviceEntry>())) {
        MessageWriter message(MessageType::device);
        message.putText(device.name);
        message.putText(device.vendor);
        message.putText(device.model);
        (void)sendMessage(workerSocketDescriptor, message.bytes());
    }
    MessageWriter answer(MessageType::answer);
    answer.putNumber(static_cast<uint32_t>(devices ? ScanStatus::good : ScanStatus::ioError));
    (void)sendMessage(workerSocketDescriptor, answer.bytes());
    return devices ? 0 : 1;
}

} // namespace paperline::sources

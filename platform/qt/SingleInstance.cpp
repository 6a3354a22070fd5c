#include "platform/qt/SingleInstance.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/places/StandardFolders.h"

#include <QLocalSocket>
#include <QThread>

#include <unistd.h>
#include <utility>
#include <vector>

namespace paperline {
namespace {

// A socket's path has room for 107 bytes.
constexpr size_t longestFolder = 80;
constexpr int attempts = 20;
constexpr int attemptMilliseconds = 100;

QString inFolder(const std::string& folder, const std::string& name) {
    return QString::fromStdString(appendPathComponent(folder, name));
}

} // namespace

std::string instanceFolder() {
    const std::string user = std::to_string(::geteuid());
    std::vector<std::string> candidates;
    // A session started with "su" has no variable, but must find the same folder.
    for (const std::string& runtime : {environment("XDG_RUNTIME_DIR"), "/run/user/" + user})
        if (runtime.starts_with('/') && ownedByUserOrRoot(runtime))
            candidates.push_back(appendPathComponent(runtime, "paperline"));
    if (const std::string cache = userCacheFolder(); !cache.empty())
        candidates.push_back(cache + "/run");
    candidates.push_back("/tmp/paperline-run-" + user);
    for (const std::string& folder : candidates)
        if (folder.size() <= longestFolder && createFolderWithParents(folderOfPath(folder)) &&
            createPrivateFolder(folder))
            return folder;
    return {};
}

SingleInstance::SingleInstance(const std::string& folder)
    : socketPath_(inFolder(folder, "window.socket")), lock_(inFolder(folder, "window.lock")) {
    // A window may stay open for weeks: only the end of its process makes the lock stale.
    lock_.setStaleLockTime(0);
}

SingleInstance::~SingleInstance() = default;

SingleInstance::Role SingleInstance::start() {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (lock_.tryLock(0)) {
            listen();
            return Role::first;
        }
        if (lock_.error() != QLockFile::LockFailedError)
            return Role::unlocked;
        // The first process may hold the lock but not listen yet.
        if (askFirstToRaise())
            return Role::second;
        QThread::msleep(attemptMilliseconds);
    }
    return Role::second;
}

void SingleInstance::listen() {
    // This process holds the lock, so an existing socket belongs to one that ended.
    QLocalServer::removeServer(socketPath_);
    server_ = std::make_unique<QLocalServer>();
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(server_.get(), &QLocalServer::newConnection, [this] { answerRequests(); });
    server_->listen(socketPath_);
}

void SingleInstance::answerRequests() {
    while (QLocalSocket* request = server_->nextPendingConnection()) {
        delete request; // connecting is the whole request
        if (raise_)
            raise_();
        else
            raisePending_ = true;
    }
}

bool SingleInstance::askFirstToRaise() const {
    QLocalSocket request;
    request.connectToServer(socketPath_, QIODevice::ReadOnly);
    // There is no answer to wait for: the first process may be in the middle of a long transfer.
    return request.waitForConnected(attemptMilliseconds);
}

void SingleInstance::whenRaised(std::function<void()> raise) {
    raise_ = std::move(raise);
    if (raise_ && std::exchange(raisePending_, false))
        raise_();
}

} // namespace paperline

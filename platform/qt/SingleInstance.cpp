#include "platform/qt/SingleInstance.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"

#include <QLocalSocket>
#include <QThread>

#include <cstdlib>
#include <unistd.h>
#include <utility>
#include <vector>

namespace paperline {
namespace {

// A socket's path has room for 107 bytes.
constexpr size_t longestFolder = 80;
constexpr int attempts = 20;
constexpr int attemptMilliseconds = 100;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : std::string();
}

QString inFolder(const std::string& folder, const std::string& name) {
    return QString::fromStdString(appendPathComponent(folder, name));
}

} // namespace

std::string instanceFolder() {
    const std::string user = std::to_string(::geteuid());
    std::vector<std::string> candidates;
    // The same folder with and without the variable: a session entered by "su" has none.
    for (const std::string& runtime : {environment("XDG_RUNTIME_DIR"), "/run/user/" + user})
        if (runtime.starts_with('/') && ownedByUserOrRoot(runtime))
            candidates.push_back(appendPathComponent(runtime, "paperline"));
    const std::string cache = environment("XDG_CACHE_HOME");
    const std::string home = environment("HOME");
    if (cache.starts_with('/'))
        candidates.push_back(appendPathComponent(cache, "paperline/run"));
    else if (home.starts_with('/'))
        candidates.push_back(appendPathComponent(home, ".cache/paperline/run"));
    candidates.push_back("/tmp/paperline-run-" + user);
    for (const std::string& folder : candidates)
        if (folder.size() <= longestFolder && createFolderWithParents(folderOfPath(folder)) &&
            createPrivateFolder(folder))
            return folder;
    return {};
}

SingleInstance::SingleInstance(const std::string& folder)
    : socketPath_(inFolder(folder, "window.socket")), lock_(inFolder(folder, "window.lock")) {
    // A window may stay open for weeks: only the death of its process makes a lock stale.
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
        // Between its lock and its socket the first one cannot be reached yet.
        if (askFirstToRaise())
            return Role::second;
        QThread::msleep(attemptMilliseconds);
    }
    return Role::second;
}

void SingleInstance::listen() {
    // Only the holder of the lock comes here, so a socket that is still there is a dead one's.
    QLocalServer::removeServer(socketPath_);
    server_ = std::make_unique<QLocalServer>();
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(server_.get(), &QLocalServer::newConnection, [this] { answerRequests(); });
    server_->listen(socketPath_);
}

void SingleInstance::answerRequests() {
    while (QLocalSocket* request = server_->nextPendingConnection()) {
        delete request; // to connect is all that is asked
        if (raise_)
            raise_();
        else
            raisePending_ = true;
    }
}

bool SingleInstance::askFirstToRaise() const {
    QLocalSocket request;
    request.connectToServer(socketPath_, QIODevice::ReadOnly);
    // Connected is enough: the first one raises its window when its loop comes round to it, which
    // may be after a long transfer.
    return request.waitForConnected(attemptMilliseconds);
}

void SingleInstance::whenRaised(std::function<void()> raise) {
    raise_ = std::move(raise);
    if (raise_ && std::exchange(raisePending_, false))
        raise_();
}

} // namespace paperline

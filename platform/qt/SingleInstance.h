// One running window per user, by a lock file and a socket in a folder private to the user.
#pragma once

#include <QLocalServer>
#include <QLockFile>

#include <functional>
#include <memory>
#include <string>

namespace paperline {

// The folder for both, created private: "paperline" in XDG_RUNTIME_DIR or /run/user/UID, else in
// the user's cache folder, else "/tmp/paperline-run-UID". Empty on failure.
std::string instanceFolder();

class SingleInstance {
public:
    enum class Role {
        first,    // this process holds the lock while the object lives
        second,   // another one holds it, and was asked to come to the front
        unlocked, // the lock cannot be created (read-only folder); run without it
    };

    explicit SingleInstance(const std::string& folder);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    // Call before touching files that two windows would share. Needs a QCoreApplication. Waits at
    // most two seconds for a first process that is just starting, and takes over the lock of a
    // killed one.
    Role start();

    // Called on the main thread when another process starts, or at once if one has already.
    void whenRaised(std::function<void()> raise);

private:
    void listen();
    void answerRequests();
    bool askFirstToRaise() const;

    QString socketPath_;
    QLockFile lock_;
    std::unique_ptr<QLocalServer> server_;
    std::function<void()> raise_;
    bool raisePending_ = false;
};

} // namespace paperline

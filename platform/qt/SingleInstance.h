// One running window for each user: a lock file and a socket in a folder that is his alone.
#pragma once

#include <QLocalServer>
#include <QLockFile>

#include <functional>
#include <memory>
#include <string>

namespace paperline {

// A private folder of this user for the lock: "paperline" below XDG_RUNTIME_DIR or /run/user/UID,
// else below his cache folder, else "/tmp/paperline-run-UID". Empty when none can be had.
std::string instanceFolder();

class SingleInstance {
public:
    enum class Role {
        first,    // this process holds the lock until the object dies
        second,   // another one holds it; it has been asked to come to the front
        unlocked, // no lock can be had there (read-only folder): run without one
    };

    explicit SingleInstance(const std::string& folder);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    // Call before anything is deleted or created that two windows would share. Needs a
    // QCoreApplication; waits at most two seconds for a first one that is just starting. A lock
    // whose process was killed is taken over.
    Role start();

    // What a later start asks for; runs on the main thread. Requests that came before are kept.
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

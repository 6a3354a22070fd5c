// A worker process: in a process group of its own, sharing only standard error and one socket with
// the application.
#pragma once

#include "sources/worker/Protocol.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace paperline::sources {

// Hung source timeout of our own sources: how long a worker may be silent.
// PAPERLINE_WORKER_TIMEOUT in seconds, or 60.
std::chrono::milliseconds workerTimeout();

class WorkerProcess {
public:
    WorkerProcess() = default;
    ~WorkerProcess() { kill(); }
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    // False: `error` says why.
    [[nodiscard]] bool start(const std::string& program,
                             const std::vector<std::string>& arguments,
                             std::string& error);
    bool isStarted() const { return process_ > 0; }
    int socket() const { return socket_.number(); }
    pid_t id() const { return process_; }

    // Its last messages may still be in the socket.
    bool hasEnded() const;
    // Waits for the end and collects the process; false on timeout.
    bool waitForEnd(std::chrono::milliseconds timeout);
    // Kills the whole process group and closes the socket.
    void kill();
    // How the process ended: "signal 11", "exit status 1", empty when not known.
    const std::string& ending() const { return ending_; }

private:
    bool collect();

    pid_t process_ = 0;
    Descriptor socket_;
    std::string ending_;
};

} // namespace paperline::sources

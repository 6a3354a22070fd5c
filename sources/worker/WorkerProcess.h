// A worker process as the data source holds it: in a process group of its own, with nothing of the
// application but standard error and one socket.
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

    // Starts the program with the arguments. False: `error` says why.
    [[nodiscard]] bool start(const std::string& program,
                             const std::vector<std::string>& arguments,
                             std::string& error);
    bool isStarted() const { return process_ > 0; }
    int socket() const { return socket_.get(); }
    pid_t id() const { return process_; }

    // The process has ended (its last messages may still wait in the socket).
    bool hasEnded() const;
    // Waits for the end and collects the process; false when the time was over.
    bool waitForEnd(std::chrono::milliseconds patience);
    // Ends the whole process group at once, and closes the socket.
    void kill();
    // How the collected process ended: "signal 11", "exit status 1", empty when not known.
    const std::string& ending() const { return ending_; }

private:
    bool collect();

    pid_t process_ = 0;
    Descriptor socket_;
    std::string ending_;
};

} // namespace paperline::sources

#include "sources/worker/WorkerProcess.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace paperline::sources {

namespace {

struct SpawnSettings {
    SpawnSettings() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

// Empty standard input, standard output to standard error, the socket, nothing else.
void setDescriptors(posix_spawn_file_actions_t& actions, int socket) {
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (fcntl(STDERR_FILENO, F_GETFD) < 0)
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, socket, workerSocketDescriptor);
    posix_spawn_file_actions_addclosefrom_np(&actions, workerSocketDescriptor + 1);
}

// A process group of its own, and default signal handling.
void setAttributes(posix_spawnattr_t& attributes) {
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(
        &attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

// Numbered above the descriptors that the child will have.
bool makeSocketPair(Descriptor& ours, Descriptor& theirs) {
    std::array<int, 2> pair{-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair.data()) != 0)
        return false;
    const Descriptor first(pair[0]), second(pair[1]);
    ours = Descriptor(fcntl(first.number(), F_DUPFD_CLOEXEC, workerSocketDescriptor + 1));
    theirs = Descriptor(fcntl(second.number(), F_DUPFD_CLOEXEC, workerSocketDescriptor + 1));
    return ours.isOpen() && theirs.isOpen();
}

} // namespace

std::chrono::milliseconds workerTimeout() {
    using std::chrono::milliseconds;
    constexpr milliseconds usual{60000};
    const char* text = std::getenv("PAPERLINE_WORKER_TIMEOUT");
    if (text == nullptr)
        return usual;
    const std::string_view view = text;
    double seconds = 0;
    const auto result = std::from_chars(view.data(), view.data() + view.size(), seconds);
    if (result.ec != std::errc() || !(seconds > 0) || seconds > 86400)
        return usual;
    return milliseconds(static_cast<int64_t>(seconds * 1000));
}

bool WorkerProcess::start(const std::string& program,
                          const std::vector<std::string>& arguments,
                          std::string& error) {
    kill();
    ending_.clear();
    Descriptor theirs;
    if (!makeSocketPair(socket_, theirs)) {
        error = std::strerror(errno);
        return false;
    }
    SpawnSettings settings;
    setDescriptors(settings.actions, theirs.number());
    setAttributes(settings.attributes);
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    pid_t process = 0;
    const int failure = posix_spawn(
        &process, program.c_str(), &settings.actions, &settings.attributes, words.data(), environ);
    if (failure != 0) {
        error = program + ": " + std::strerror(failure);
        socket_.close();
        return false;
    }
    process_ = process;
    return true;
}

bool WorkerProcess::hasEnded() const {
    if (process_ <= 0)
        return true;
    siginfo_t information{};
    const int result =
        waitid(P_PID, static_cast<id_t>(process_), &information, WEXITED | WNOHANG | WNOWAIT);
    // ECHILD: the application has collected it.
    return result != 0 ? errno == ECHILD : information.si_pid == process_;
}

bool WorkerProcess::collect() {
    int status = 0;
    const pid_t result = waitpid(process_, &status, WNOHANG);
    if (result == 0 || (result < 0 && errno == EINTR))
        return false;
    if (result == process_ && WIFSIGNALED(status))
        ending_ = "signal " + std::to_string(WTERMSIG(status));
    else if (result == process_ && WIFEXITED(status))
        ending_ = "exit status " + std::to_string(WEXITSTATUS(status));
    process_ = 0;
    return true;
}

bool WorkerProcess::waitForEnd(std::chrono::milliseconds timeout) {
    using Clock = std::chrono::steady_clock;
    constexpr int stepMilliseconds = 5;
    const Clock::time_point giveUp = Clock::now() + timeout;
    // Without the descriptor the loop polls.
    const Descriptor end(process_ > 0 ? static_cast<int>(syscall(SYS_pidfd_open, process_, 0))
                                      : -1);
    while (process_ > 0) {
        if (hasEnded()) {
            // Until the leader is collected the group's number cannot be reused.
            ::kill(-process_, SIGKILL);
            return collect();
        }
        if (Clock::now() >= giveUp)
            return false;
        pollfd entry{end.number(), POLLIN, 0};
        // The descriptor of a traced process may be ready before the process can be collected.
        if (poll(&entry, 1, stepMilliseconds) > 0 && !hasEnded())
            poll(nullptr, 0, stepMilliseconds);
    }
    return true;
}

void WorkerProcess::kill() {
    socket_.close();
    if (process_ <= 0)
        return;
    ::kill(-process_, SIGKILL);
    // A process in uninterruptible I/O may not end at once; it is given up then.
    if (!waitForEnd(std::chrono::seconds(2)))
        process_ = 0;
}

} // namespace paperline::sources

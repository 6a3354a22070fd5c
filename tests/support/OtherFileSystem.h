// File systems beside the one that tests run on.
#pragma once

#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace paperline::testing_support {

inline bool shell(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

// A file system with little room, mounted by root or sudo; without either the process's own limit
// of a file's size stands in for it.
class SmallDisk {
public:
    explicit SmallDisk(unsigned kilobytes) {
        const std::string size = "size=" + std::to_string(kilobytes) + "k,mode=0777";
        mounted_ = ::mount("tmpfs", folder_.path().c_str(), "tmpfs", 0, size.c_str()) == 0 ||
                   shell("sudo -n mount -t tmpfs -o " + size + " tmpfs '" + folder_.path() + "'");
        if (mounted_)
            return;
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{rlim_t{kilobytes} * 1024, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::signal(SIGXFSZ, SIG_IGN);
    }
    ~SmallDisk() {
        if (!mounted_)
            ::setrlimit(RLIMIT_FSIZE, &before_);
        else if (::umount2(folder_.path().c_str(), MNT_DETACH) != 0)
            shell("sudo -n umount -l '" + folder_.path() + "'");
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    std::string operator/(const std::string& name) const { return folder_ / name; }
    const std::string& path() const { return folder_.path(); }
    // The system's text for a write that does not fit.
    const char* fullText() const { return mounted_ ? "No space left on device" : "File too large"; }

private:
    TestFolder folder_;
    bool mounted_ = false;
    rlimit before_{};
};

inline dev_t deviceOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_dev;
}

// A folder on another file system than the test folder's: a mounted one or, without the right to
// mount, the shared memory's.
class OtherFileSystem {
public:
    explicit OtherFileSystem(dev_t notThis) {
        if (deviceOf(disk_.path()) == notThis)
            shared_.emplace("/dev/shm");
        EXPECT_NE(deviceOf(path()), notThis) << "no second file system";
    }
    const std::string& path() const { return shared_ ? shared_->path() : disk_.path(); }
    std::string operator/(const std::string& name) const { return path() + "/" + name; }

private:
    SmallDisk disk_{1024};
    std::optional<TestFolder> shared_;
};

} // namespace paperline::testing_support

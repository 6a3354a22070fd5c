// What tests of files share: a folder, environment, another user's file.
#pragma once

#include "tests/support/OtherFileSystem.h"
#include "tests/support/TestFolder.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace paperline::testing_support {

inline std::vector<uint8_t> bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

inline std::string textOf(const std::string& path) {
    const auto bytes = readFile(path);
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(unreadable)";
}

inline bool put(const std::string& path, std::string_view text) {
    return writeFile(path, bytesOf(text));
}

// Environment variables of one test; an absent value unsets.
class TestEnvironment {
public:
    TestEnvironment() = default;
    ~TestEnvironment() {
        for (const auto& [name, value] : before_)
            put(name, value);
    }
    TestEnvironment(const TestEnvironment&) = delete;
    TestEnvironment& operator=(const TestEnvironment&) = delete;

    void set(const std::string& name, const std::optional<std::string>& value) {
        const char* old = std::getenv(name.c_str());
        before_.try_emplace(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
        put(name, value);
    }

private:
    static void put(const std::string& name, const std::optional<std::string>& value) {
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }
    std::map<std::string, std::optional<std::string>> before_;
};

// Runs the body in a child process; its failures count here.
inline void inChild(const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        body();
        std::fflush(nullptr);
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "killed by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "see the failures above";
}

inline void writeMap(const char* file, const std::string& text) {
    ASSERT_TRUE(put(file, text)) << file;
}

// The body sees `path` (a file or an empty folder that is there) as another user's: given away by
// root or sudo, or, for a plain user, covered in a namespace by one that belongs to root.
inline void asAnotherUsers(const std::string& path, const std::function<void()>& body) {
    constexpr uid_t nobody = 65534;
    if (::lchown(path.c_str(), nobody, nobody) == 0 ||
        shell("sudo -n chown -h 65534:65534 '" + path + "'")) {
        body();
        return;
    }
    const std::string user = std::to_string(::geteuid());
    inChild([&] {
        ASSERT_EQ(::unshare(CLONE_NEWUSER | CLONE_NEWNS), 0) << "no way to a second user's file";
        writeMap("/proc/self/uid_map", user + " " + user + " 1");
        const char* cover = folderExists(path) ? "/etc" : "/etc/passwd";
        ASSERT_EQ(::mount(cover, path.c_str(), nullptr, MS_BIND, nullptr), 0);
        body();
    });
}

} // namespace paperline::testing_support

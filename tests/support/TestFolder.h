// A folder of one test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace paperline::testing_support {

// A fresh folder of this test, removed with it.
class TestFolder {
public:
    explicit TestFolder(const std::string& parent = {}) {
        const char* temporary = std::getenv("TMPDIR");
        path_ = !parent.empty() ? parent : temporary != nullptr ? temporary : "/tmp";
        path_ += "/paperline-test-XXXXXX";
        if (::mkdtemp(path_.data()) == nullptr)
            ADD_FAILURE() << "no test folder at " << path_;
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

} // namespace paperline::testing_support

// Starts Qt before the first test of a program.
#include <QApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override { application_ = std::make_unique<QApplication>(count_, arguments_); }
    void TearDown() override { application_.reset(); }

private:
    int count_ = 1;
    char name_[5] = "test";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

const auto* const registered = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

} // namespace

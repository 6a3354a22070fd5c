#include "platform/qt/SingleInstance.h"

#include "QtTestSupport.h"
#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <QLocalServer>
#include <QLockFile>
#include <QProcess>

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace paperline {
namespace {

using namespace testing_support;

// One start of the application.
class Start {
public:
    explicit Start(const std::string& folder) {
        process_.start(QStringLiteral(PAPERLINE_INSTANCE_PROBE), {QString::fromStdString(folder)});
        EXPECT_TRUE(process_.waitForStarted());
    }
    ~Start() {
        process_.closeWriteChannel();
        process_.waitForFinished();
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    std::string nextLine() {
        while (!process_.canReadLine())
            if (!process_.waitForReadyRead(10'000))
                return "(nothing)";
        return process_.readLine().trimmed().toStdString();
    }
    void kill() {
        process_.kill();
        process_.waitForFinished();
    }

private:
    QProcess process_;
};

class Instances : public testing::Test {
protected:
    Instances() { EXPECT_TRUE(createPrivateFolder(path())); }
    std::string path() const { return folder_ / "run"; }
    QString inside(const char* name) const { return QString::fromStdString(path() + "/" + name); }

    TestFolder folder_;
};

TEST_F(Instances, TheSecondRaisesTheFirst) {
    Start first(path());
    EXPECT_EQ(first.nextLine(), "first");
    for (int round = 0; round < 3; ++round) {
        Start second(path());
        EXPECT_EQ(second.nextLine(), "second");
        EXPECT_EQ(first.nextLine(), "raised");
    }
}

TEST_F(Instances, TheNextIsFirstAfterTheFirstEnded) {
    {
        Start first(path());
        EXPECT_EQ(first.nextLine(), "first");
    }
    Start next(path());
    EXPECT_EQ(next.nextLine(), "first");
}

TEST_F(Instances, TheNextIsFirstAfterAKill) {
    Start first(path());
    EXPECT_EQ(first.nextLine(), "first");
    first.kill();
    EXPECT_TRUE(fileExists(path() + "/window.lock")); // left behind, as is the socket
    EXPECT_TRUE(fileExists(path() + "/window.socket"));
    Start next(path());
    EXPECT_EQ(next.nextLine(), "first");
    Start second(path());
    EXPECT_EQ(second.nextLine(), "second");
    EXPECT_EQ(next.nextLine(), "raised");
}

TEST_F(Instances, OneOfManyIsFirst) {
    Start killed(path());
    EXPECT_EQ(killed.nextLine(), "first");
    killed.kill();
    std::vector<std::unique_ptr<Start>> starts;
    for (int index = 0; index < 5; ++index)
        starts.push_back(std::make_unique<Start>(path()));
    std::vector<std::string> roles;
    for (const auto& start : starts)
        roles.push_back(start->nextLine());
    EXPECT_EQ(std::ranges::count(roles, "first"), 1);
    EXPECT_EQ(std::ranges::count(roles, "second"), 4);
}

TEST_F(Instances, TheSecondWaitsForTheFirstToListen) {
    QLockFile lock(inside("window.lock"));
    lock.setStaleLockTime(0);
    ASSERT_TRUE(lock.tryLock(0));
    Start second(path());
    QThread::msleep(300);
    QLocalServer server;
    ASSERT_TRUE(server.listen(inside("window.socket")));
    EXPECT_TRUE(server.waitForNewConnection(10'000));
    EXPECT_EQ(second.nextLine(), "second");
}

TEST_F(Instances, TheSecondTakesOverFromAFirstThatEndsMeanwhile) {
    QLockFile lock(inside("window.lock"));
    lock.setStaleLockTime(0);
    ASSERT_TRUE(lock.tryLock(0));
    Start second(path());
    QThread::msleep(300);
    lock.unlock();
    EXPECT_EQ(second.nextLine(), "first");
}

TEST_F(Instances, RunWithoutALockWhereThereCanBeNone) {
    SingleInstance instance(folder_ / "missing");
    EXPECT_EQ(instance.start(), SingleInstance::Role::unlocked);
}

TEST_F(Instances, KeepARequestThatComesTooEarly) {
    SingleInstance first(path());
    ASSERT_EQ(first.start(), SingleInstance::Role::first);
    Start second(path());
    EXPECT_EQ(second.nextLine(), "second");
    turnAWhile();
    int raised = 0;
    first.whenRaised([&raised] { ++raised; });
    EXPECT_EQ(raised, 1);
}

// These are places of the real user; a window of his that runs keeps its lock there.
void removeIfEmpty(const std::string& folder) {
    ::rmdir(folder.c_str());
}

TEST(InstanceFolder, LiesInTheRuntimeFolder) {
    const TestFolder folder("/tmp");
    TestEnvironment environment;
    environment.set("XDG_RUNTIME_DIR", folder.path());
    EXPECT_EQ(instanceFolder(), folder / "paperline");
    EXPECT_TRUE(folderExists(folder / "paperline"));
    EXPECT_EQ(instanceFolder(), folder / "paperline");
}

TEST(InstanceFolder, AvoidsWhatAnotherUserHolds) {
    const TestFolder folder("/tmp");
    TestEnvironment environment;
    environment.set("XDG_CACHE_HOME", folder / "cache");
    ASSERT_TRUE(createFolder(folder / "run"));
    environment.set("XDG_RUNTIME_DIR", folder / "run");
    ASSERT_TRUE(createFolder(folder / "run/paperline"));
    asAnotherUsers(folder / "run/paperline", [&] {
        const std::string other = instanceFolder();
        EXPECT_NE(other, folder / "run/paperline");
        EXPECT_TRUE(createPrivateFolder(other)) << other;
        removeIfEmpty(other);
    });
}

TEST(InstanceFolder, IsShortEnoughForASocket) {
    const TestFolder folder("/tmp");
    TestEnvironment environment;
    const std::string deep = folder / std::string(100, 'd');
    ASSERT_TRUE(createFolder(deep));
    environment.set("XDG_RUNTIME_DIR", deep);
    environment.set("XDG_CACHE_HOME", deep);
    const std::string found = instanceFolder();
    EXPECT_LE(found.size(), 80U);
    EXPECT_FALSE(found.empty());
    EXPECT_EQ(found.find(deep), std::string::npos);
    removeIfEmpty(found);
}

} // namespace
} // namespace paperline

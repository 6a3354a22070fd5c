#include "platform/qt/DesktopServices.h"

#include "platform/desktop/MainLoop.h"

#include "QtTestSupport.h"
#include "tests/support/FileTesting.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusServer>
#include <QDBusVirtualObject>
#include <QFileDialog>
#include <QImage>
#include <QTimer>

#include <gmock/gmock.h>

#include <vector>

namespace paperline {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace testing_support;

// A file manager behind a private connection: no message bus is needed.
class FileManager : public QDBusVirtualObject {
public:
    enum class Manner { shows, fails, isSilent };

    explicit FileManager(Manner manner)
        : manner_(manner), server_(QStringLiteral("unix:tmpdir=/tmp")) {
        server_.setAnonymousAuthenticationAllowed(true);
        QObject::connect(
            &server_, &QDBusServer::newConnection, [this](const QDBusConnection& client) {
                QDBusConnection(client).registerVirtualObject(
                    QStringLiteral("/org/freedesktop/FileManager1"), this);
            });
    }
    ~FileManager() override { QDBusConnection::disconnectFromPeer(QStringLiteral("test")); }

    QDBusConnection connect() const {
        return QDBusConnection::connectToPeer(server_.address(), QStringLiteral("test"));
    }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (manner_ == Manner::isSilent)
            return true;
        calls.push_back(message.interface().toStdString() + "." + message.member().toStdString());
        for (const QString& item : message.arguments().value(0).toStringList())
            items.push_back(item.toStdString());
        const QDBusMessage answer =
            manner_ == Manner::shows
                ? message.createReply()
                : message.createErrorReply(QDBusError::ServiceUnknown, QStringLiteral("nobody"));
        return connection.send(answer);
    }

    std::vector<std::string> calls;
    std::vector<std::string> items;

private:
    Manner manner_;
    QDBusServer server_;
};

struct Opened {
    std::vector<std::string> folders;
    std::function<void(const std::string&)> record() {
        return [this](const std::string& folder) { folders.push_back(folder); };
    }
};

TEST(Reveal, AsksTheFileManagerWithAnAddress) {
    FileManager manager(FileManager::Manner::shows);
    Opened opened;
    revealThrough(manager.connect(), "/some dir/\xC3\x84 #1 100%.jpg", opened.record());
    EXPECT_TRUE(turnUntil([&manager] { return !manager.calls.empty(); }));
    turnAWhile();
    EXPECT_THAT(manager.calls, ElementsAre("org.freedesktop.FileManager1.ShowItems"));
    EXPECT_THAT(manager.items, ElementsAre("file:///some%20dir/%C3%84%20%231%20100%25.jpg"));
    EXPECT_THAT(opened.folders, IsEmpty());
}

TEST(Reveal, OpensTheFolderWhenTheFileManagerRefuses) {
    FileManager manager(FileManager::Manner::fails);
    const TestFolder folder;
    Opened opened;
    revealThrough(manager.connect(), folder / "page.jpg", opened.record());
    EXPECT_THAT(opened.folders, IsEmpty()); // it returns at once
    EXPECT_TRUE(turnUntil([&opened] { return !opened.folders.empty(); }));
    EXPECT_THAT(opened.folders, ElementsAre(folder.path()));
}

TEST(Reveal, OpensTheFolderWhenNobodyAnswers) {
    FileManager manager(FileManager::Manner::isSilent);
    const TestFolder folder;
    Opened opened;
    revealThrough(manager.connect(), folder.path(), opened.record());
    EXPECT_TRUE(turnUntil([&opened] { return !opened.folders.empty(); }));
    EXPECT_THAT(opened.folders, ElementsAre(folder.path()));
}

TEST(Reveal, OpensTheFolderWithoutABus) {
    Opened opened;
    revealThrough(QDBusConnection(QStringLiteral("no such connection")), "/a/b", opened.record());
    EXPECT_THAT(opened.folders, ElementsAre("/a"));
}

// Hands the chooser to `answer` as soon as it is there.
void whenChoosing(std::function<void(QFileDialog&)> answer) {
    QTimer::singleShot(10, [answer = std::move(answer)] {
        auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (chooser == nullptr)
            whenChoosing(answer);
        else
            answer(*chooser);
    });
}

TEST(FolderChooser, StartsAtTheGivenFolder) {
    installDesktopServices();
    const TestFolder folder;
    whenChoosing([&folder](QFileDialog& chooser) {
        EXPECT_EQ(chooser.directory().path().toStdString(), folder.path());
        EXPECT_EQ(chooser.fileMode(), QFileDialog::Directory);
        static_cast<QDialog&>(chooser).accept();
    });
    EXPECT_EQ(desktop().chooseFolder("Save Folder", folder.path()), folder.path());
}

TEST(FolderChooser, WritesItsPathFromLeftToRightInEveryLanguage) {
    installDesktopServices();
    std::vector<QImage> pictures;
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        whenChoosing([&](QFileDialog& chooser) {
            EXPECT_EQ(chooser.layoutDirection(), direction);
            auto* path = chooser.findChild<QWidget*>("lookInCombo");
            ASSERT_NE(path, nullptr);
            path->setFixedSize(300, 30);
            pictures.push_back(path->grab().toImage());
            static_cast<QDialog&>(chooser).reject();
        });
        EXPECT_EQ(desktop().chooseFolder("Save Folder", "/tmp"), std::nullopt);
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
    ASSERT_EQ(pictures.size(), 2U);
    EXPECT_EQ(pictures[0], pictures[1]);
}

TEST(FolderChooser, GivesNothingWhenItIsCancelled) {
    installDesktopServices();
    bool ran = false;
    performAfterDelay(0, [&ran] { ran = true; });
    whenChoosing([&ran](QFileDialog& chooser) {
        EXPECT_FALSE(ran); // a modal window: delayed messages wait
        static_cast<QDialog&>(chooser).reject();
    });
    EXPECT_EQ(desktop().chooseFolder("Save Folder", "/tmp"), std::nullopt);
    EXPECT_TRUE(turnUntil([&ran] { return ran; }));
}

} // namespace
} // namespace paperline

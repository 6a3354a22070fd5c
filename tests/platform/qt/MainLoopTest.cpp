#include "platform/MainLoop.h"

#include "QtTestSupport.h"

#include <QDialog>
#include <QPushButton>
#include <QTimer>
#include <QWindow>

#include <gmock/gmock.h>
#include <limits>
#include <thread>
#include <vector>

// Qt's own hook for tests: puts a mouse event into the queue that a window system would fill.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window,
                                      const QPointF& local,
                                      const QPointF& global,
                                      Qt::MouseButtons state,
                                      Qt::MouseButton button,
                                      QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers,
                                      int timestamp);

namespace paperline {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace testing_support;

TEST(MainLoop, DropsActionsWithoutAnApplication) {
    turnAWhile();
    EXPECT_FALSE(ranWithoutApplication);
}

TEST(MainLoop, RunsDelayedActionsInTheOrderTheyFallDue) {
    std::vector<int> ran;
    performAfterDelay(0.08, [&ran] { ran.push_back(3); });
    performAfterDelay(0.04, [&ran] { ran.push_back(2); });
    performAfterDelay(0, [&ran] { ran.push_back(1); });
    EXPECT_THAT(ran, IsEmpty());
    EXPECT_TRUE(turnUntil([&ran] { return ran.size() == 3; }));
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST(MainLoop, TakesAnyDelay) {
    int ran = 0;
    performAfterDelay(-5, [&ran] { ++ran; });
    performAfterDelay(std::numeric_limits<double>::quiet_NaN(), [&ran] { ++ran; });
    auto far = std::make_shared<bool>(false);
    performAfterDelay(1e300, [far] { *far = true; });
    EXPECT_TRUE(turnUntil([&ran] { return ran == 2; }));
    EXPECT_FALSE(*far);
}

TEST(MainLoop, RunsActionsOfOtherThreadsOnTheMainThread) {
    const std::thread::id main = std::this_thread::get_id();
    std::vector<std::thread::id> ranOn;
    bool wasMain = true;
    std::thread other([&] {
        wasMain = isMainThread();
        postToMainThread([&ranOn] { ranOn.push_back(std::this_thread::get_id()); });
        performAfterDelay(0.01, [&ranOn] { ranOn.push_back(std::this_thread::get_id()); });
    });
    other.join();
    EXPECT_FALSE(wasMain);
    EXPECT_TRUE(isMainThread());
    EXPECT_THAT(ranOn, IsEmpty());
    EXPECT_TRUE(turnUntil([&ranOn] { return ranOn.size() == 2; }));
    EXPECT_THAT(ranOn, ElementsAre(main, main));
}

TEST(Hold, KeepsDelayedActionsInOrderUntilTheLastEnds) {
    std::vector<int> ran;
    {
        const DelayedMessagesHold outer;
        {
            const DelayedMessagesHold inner;
            performAfterDelay(0, [&ran] { ran.push_back(1); });
            performAfterDelay(0.02, [&ran] { ran.push_back(2); });
            std::thread([&ran] { performAfterDelay(0.04, [&ran] { ran.push_back(3); }); }).join();
            for (int turn = 0; turn < 10; ++turn)
                turnAWhile();
        }
        turnAWhile();
        EXPECT_THAT(ran, IsEmpty());
    }
    // Not from within the hold's end, where a transfer is still finishing.
    EXPECT_THAT(ran, IsEmpty());
    EXPECT_TRUE(turnUntil([&ran] { return ran.size() == 3; }));
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST(Hold, DoesNotKeepPostedActions) {
    const DelayedMessagesHold hold;
    bool ran = false;
    postToMainThread([&ran] { ran = true; });
    EXPECT_TRUE(turnUntil([&ran] { return ran; }));
}

TEST(Hold, ThatBeginsAgainKeepsWhatWasReleased) {
    std::vector<int> ran;
    auto first = std::make_unique<DelayedMessagesHold>();
    performAfterDelay(0, [&ran] { ran.push_back(1); });
    turnAWhile();
    first.reset();
    {
        const DelayedMessagesHold second;
        turnAWhile();
        EXPECT_THAT(ran, IsEmpty());
    }
    EXPECT_TRUE(turnUntil([&ran] { return ran.size() == 1; }));
}

class CountingButton : public QPushButton {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override {
        ++paints;
        QPushButton::paintEvent(event);
    }
};

void click(QWindow* window, const QPointF& at) {
    const QPointF global = window->mapToGlobal(at);
    qt_handleMouseEvent(window,
                        at,
                        global,
                        Qt::LeftButton,
                        Qt::LeftButton,
                        QEvent::MouseButtonPress,
                        Qt::NoModifier,
                        1);
    qt_handleMouseEvent(window,
                        at,
                        global,
                        Qt::NoButton,
                        Qt::LeftButton,
                        QEvent::MouseButtonRelease,
                        Qt::NoModifier,
                        2);
}

TEST(Repainting, PaintsWithoutHandlingInput) {
    CountingButton button;
    int clicks = 0;
    QObject::connect(&button, &QPushButton::clicked, [&clicks] { ++clicks; });
    button.resize(80, 40);
    button.show();
    ASSERT_TRUE(turnUntil([&button] { return button.paints > 0; }));
    turnAWhile();
    const int before = button.paints;
    button.update();
    click(button.windowHandle(), QPointF(10, 10));
    for (int round = 0; round < 5; ++round)
        repaintWithoutInput();
    EXPECT_GT(button.paints, before);
    EXPECT_EQ(clicks, 0);
    EXPECT_TRUE(turnUntil([&clicks] { return clicks == 1; })); // the click was a real one
}

TEST(Repainting, LetsDelayedActionsWait) {
    bool ran = false;
    performAfterDelay(0, [&ran] { ran = true; });
    for (int round = 0; round < 20; ++round) {
        repaintWithoutInput();
        QThread::msleep(1);
    }
    EXPECT_FALSE(ran);
    EXPECT_TRUE(turnUntil([&ran] { return ran; }));
}

TEST(Termination, EndsTheLoopOnceAndReturnsToItsCaller) {
    resetTerminationRequest();
    EXPECT_FALSE(terminationRequested());
    bool returned = false;
    QTimer::singleShot(0, [&returned] {
        requestTermination();
        requestTermination();
        returned = true;
        EXPECT_TRUE(terminationRequested());
    });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_TRUE(returned);
    resetTerminationRequest();
}

TEST(Termination, EndsAModalWindowToo) {
    resetTerminationRequest();
    bool closed = false;
    QTimer::singleShot(0, [&closed] {
        QDialog dialog;
        QTimer::singleShot(0, [] { requestTermination(); });
        dialog.exec();
        closed = true;
    });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_TRUE(closed);
    resetTerminationRequest();
}

} // namespace
} // namespace paperline

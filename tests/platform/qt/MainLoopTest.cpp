#include "platform/desktop/MainLoop.h"

#include "QtTestSupport.h"

#include <QCursor>
#include <QDialog>
#include <QTimer>
#include <QWidget>

#include <gmock/gmock.h>
#include <limits>
#include <thread>
#include <vector>

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

class CountingWidget : public QWidget {
public:
    CountingWidget() { setMouseTracking(true); }
    int paints = 0;
    int moves = 0;

protected:
    void paintEvent(QPaintEvent* event) override {
        ++paints;
        QWidget::paintEvent(event);
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        ++moves;
        QWidget::mouseMoveEvent(event);
    }
};

TEST(Repainting, PaintsWithoutHandlingInput) {
    CountingWidget widget;
    widget.setGeometry(100, 100, 200, 200);
    widget.show();
    ASSERT_TRUE(turnUntil([&widget] { return widget.paints > 0; }));
    QCursor::setPos(widget.mapToGlobal(QPoint(20, 20)));
    turnAWhile();
    const int movesBefore = widget.moves;
    const int paintsBefore = widget.paints;
    // The platform queues what the mouse does, as a window system would.
    QCursor::setPos(widget.mapToGlobal(QPoint(90, 90)));
    widget.update();
    for (int round = 0; round < 5; ++round)
        repaintWithoutInput();
    EXPECT_GT(widget.paints, paintsBefore);
    EXPECT_EQ(widget.moves, movesBefore);
    // Nothing is lost: with the next event the kept one comes, too.
    QCursor::setPos(widget.mapToGlobal(QPoint(30, 30)));
    EXPECT_TRUE(turnUntil([&] { return widget.moves == movesBefore + 2; })) << widget.moves;
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

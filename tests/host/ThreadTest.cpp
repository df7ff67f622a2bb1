#include "platform/VQMThread.h"
#include "platform/VQMUtility.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>

#include <future>
#include <numeric>
#include <pthread.h>

namespace Orvia {

namespace {

// What the work writes is unlocked on purpose: a checker sees whether post() and stop() order it.
class ThreadTest : public ::testing::Test
{
private:
    int m_argumentCount = 1;
    char m_name[11] = "host_tests";
    char *m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
};

TEST_F(ThreadTest, WorkRunsInOrderAndStopDrainsIt)
{
    std::vector<int> expected(200), seen;
    std::iota(expected.begin(), expected.end(), 0);
    VQMThread thread("worker");
    const auto post = [&](int number) { thread.post([&seen, number] { seen.push_back(number); }); };
    for (int i = 0; i < 100; ++i) // waits for the start
        post(i);
    thread.start();
    for (int i = 100; i < 200; ++i)
        post(i);
    thread.stop();
    thread.stop();
    EXPECT_EQ(seen, expected);

    post(200);
    EXPECT_EQ(seen.size(), 200u);
    thread.start(); // once more
    thread.stop();
    EXPECT_EQ(seen.size(), 201u);
}

TEST_F(ThreadTest, WorkOnTheGuiThreadThrowsWhereItWasCalled)
{
    VQMThread thread("caller");
    thread.start();
    std::string caught;
    thread.post([&caught] {
        try {
            VQMUtility::runOnGuiThread([] { throw std::runtime_error("on the GUI thread"); });
        } catch (const std::runtime_error &error) {
            caught = error.what();
        }
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    thread.stop();
    EXPECT_EQ(caught, "on the GUI thread");
}

TEST_F(ThreadTest, HasNameAndEventLoop)
{
    std::promise<std::string> name;
    std::promise<void> fired;
    VQMThread thread("init-context");
    thread.start();
    thread.post([&] {
        char text[16] = "";
        pthread_getname_np(pthread_self(), text, sizeof(text));
        name.set_value(text);
        QTimer::singleShot(1, [&] { fired.set_value(); });
    });
    EXPECT_EQ(name.get_future().get(), "init-context");
    EXPECT_EQ(fired.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST_F(ThreadTest, StopsFromItsOwnWorkAndInTheDestructor)
{
    int done = 0;
    {
        VQMThread thread("self");
        thread.start();
        thread.post([&] {
            thread.stop();
            ++done;
        });
    }
    EXPECT_EQ(done, 1);
    VQMThread neverStarted("never");
    neverStarted.post([&] { ++done; });
    neverStarted.stop();
    EXPECT_EQ(done, 1);
}

} // namespace

} // namespace Orvia

#include "platform/VQMProgressBar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <thread>

namespace Orvia {

namespace {

using ::testing::ElementsAre;

/// Unlocked on purpose: calls that are not one at a time break it.
struct Recorder final : VQMProgressHandler
{
    std::vector<std::string> calls;
    std::function<void()> pressed;

    void note(const char *what, int id, const QString &more)
    {
        calls.push_back(std::to_string(id) + ' ' + what + ' ' + more.toStdString());
    }
    void barCreated(int id, const QString &title) override { note("bar", id, title); }
    void barUpdated(int id, int percent) override { note("at", id, QString::number(percent)); }
    void barRemoved(int id) override { note("bar", id, "off"); }
    void buttonCreated(int id, const QString &title, const std::function<void()> &function) override
    {
        note("button", id, title);
        pressed = function;
    }
    void buttonRemoved(int id) override { note("button", id, "off"); }
};

TEST(ProgressBarsTest, HandlerInstalledLateIsToldOfWhatThereIs)
{
    const int first = VQMProgressBar::createProgressBar("Loading", false);
    const int gone = VQMProgressBar::createProgressBar("Gone", false);
    const int button = VQMProgressBar::createButton("Abort", [&gone] {
        VQMProgressBar::removeButton(gone + 1, false); // takes itself off the display
    });
    EXPECT_EQ(gone, first + 1);
    EXPECT_EQ(button, first + 2);
    VQMProgressBar::updateProgressBar(first, 40, false);
    VQMProgressBar::removeProgressBar(gone, false);

    Recorder late;
    EXPECT_FALSE(VQMProgressBar::isProgressHandlerInstalled());
    VQMProgressBar::installProgressHandler(&late);
    EXPECT_TRUE(VQMProgressBar::isProgressHandlerInstalled());
    VQMProgressBar::updateProgressBar(first, 120, false);
    for (int other : {gone, button}) { // no bars
        VQMProgressBar::updateProgressBar(other, 1, false);
        VQMProgressBar::removeProgressBar(other, false);
    }
    ASSERT_TRUE(late.pressed);
    late.pressed();
    VQMProgressBar::removeProgressBar(first, false);
    VQMProgressBar::removeProgressHandler(&late);
    VQMProgressBar::removeProgressBar(VQMProgressBar::createProgressBar("Unseen", false), false);

    const std::string bar = std::to_string(first), key = std::to_string(button);
    EXPECT_THAT(late.calls, ElementsAre(bar + " bar Loading", bar + " at 40", key + " button Abort",
                                        bar + " at 120", key + " button off", bar + " bar off"));
}

TEST(ProgressBarsTest, HandlersAreCalledOneAtATime)
{
    Recorder recorder;
    VQMProgressBar::installProgressHandler(&recorder);
    constexpr int threads = 4, updates = 5000;
    std::latch start(threads);
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int i = 0; i < threads; ++i)
        workers.emplace_back([&start] {
            start.arrive_and_wait();
            const int id = VQMProgressBar::createProgressBar("Bar", false);
            for (int percent = 0; percent < updates; ++percent)
                VQMProgressBar::updateProgressBar(id, percent, false);
            VQMProgressBar::removeProgressBar(id, false);
        });
    for (std::thread &worker : workers)
        worker.join();
    VQMProgressBar::removeProgressHandler(&recorder);
    EXPECT_EQ(recorder.calls.size(), threads * (updates + 2u));
}

} // namespace

} // namespace Orvia

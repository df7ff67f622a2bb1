#include "gui/EGuiEventType.h"
#include "gui/VQMGuiAlertEventType.h"
#include "gui/VQMMainGui.h"
#include "platform/VQMUtility.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace Orvia {
namespace {

constexpr int senders = 8;
constexpr int alerts = 10'000;

/// Counts where each alert has arrived.
class Arrivals : public VQMErrorManagerHook
{
public:
    Arrivals() { VQMUtility::setErrorManagerHook(this); }
    ~Arrivals() override { VQMUtility::setErrorManagerHook(nullptr); }
    void alert(const QString &, const QString &text) override
    {
        const std::lock_guard lock(m_mutex);
        ++m_counts.at(text.toInt());
        ++atHook;
    }
    void shown(const QString &text)
    {
        const std::lock_guard lock(m_mutex);
        ++m_counts.at(text.toInt());
        ++atReceiver;
    }
    const std::array<int, alerts> &counts() const { return m_counts; }

    int atHook = 0;
    int atReceiver = 0;
    std::mutex handover; ///< for the sanitizer, to which those of Qt's event queue are unknown

private:
    std::mutex m_mutex;
    std::array<int, alerts> m_counts = {};
};

/// The GUI object, without the boxes: ten thousand of them would be nested in each other.
class CountingGui : public VQMMainGui
{
public:
    explicit CountingGui(Arrivals *arrivals) : VQMMainGui(nullptr), m_arrivals(arrivals) {}
    bool eventFilter(QObject *, QEvent *event) override
    {
        const std::lock_guard lock(m_arrivals->handover);
        if (event->type() == static_cast<QEvent::Type>(eAlert))
            m_arrivals->shown(static_cast<VQMGuiAlertEventType *>(event)->m_text);
        return true;
    }

private:
    Arrivals *m_arrivals;
};

TEST(AlertsTest, ArriveOnceEachWhileTheirReceiverComesAndGoes)
{
    int argc = 1;
    char name[] = "test";
    char *argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    Arrivals arrivals;
    std::atomic<int> next = 0;
    std::atomic<int> working = senders;
    std::atomic<int> receivers = 0; // that there have been
    std::vector<std::thread> threads;
    threads.reserve(senders);
    const auto send = [&] {
        const int number = next++;
        const std::lock_guard lock(arrivals.handover);
        if (number < alerts)
            VQMMainGui::showAlert("caption", QString::number(number));
        return number < alerts;
    };
    for (int i = 0; i < senders; ++i)
        threads.emplace_back([&] {
            while (receivers == 0)
                std::this_thread::yield();
            while (send())
                std::this_thread::yield();
            --working;
        });
    while (working > 0) {
        CountingGui gui(&arrivals);
        send(); // so that each way is gone at least by these, however the threads take turns
        if (++receivers % 2 == 0) // the others go with all their alerts in the queue
            for (int i = 0; i < 200; ++i)
                QCoreApplication::sendPostedEvents(&gui, eAlert);
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_THAT(arrivals.counts(), testing::Each(1));
    EXPECT_GT(receivers, 10);
    EXPECT_GT(arrivals.atHook, 0);
    EXPECT_GT(arrivals.atReceiver, 0);
    std::printf("%d alerts: %d at one of %d receivers, %d at the hook\n", alerts, arrivals.atReceiver,
                receivers.load(), arrivals.atHook);
}

} // namespace
} // namespace Orvia

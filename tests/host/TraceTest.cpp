#include "platform/TraceSpan.h"
#include "platform/VQMUtility.h"

#include "tests/host/HostTest.h"

#include <csignal>
#include <regex>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Orvia {

namespace {

class TraceTest : public HostTest
{
protected:
    struct Line
    {
        double seconds;
        std::string thread, text;
    };

    void TearDown() override { VQMUtility::stopTrace(); }

    static std::vector<Line> parsed(const QByteArray &trace)
    {
        static const std::regex head(R"( *(\d+\.\d{6}) \[(\d+) [^\]]*\] )");
        std::vector<Line> lines;
        for (const QByteArray &line : trace.split('\n')) {
            std::smatch match;
            const std::string text = line.toStdString();
            if (std::regex_search(text, match, head, std::regex_constants::match_continuous))
                lines.push_back({std::stod(match[1]), match[2], match.suffix()});
            else
                EXPECT_EQ(text, "");
        }
        return lines;
    }

    /// Runs `work` in a child process and returns how that ended.
    template <typename Work>
    static int inChild(Work work)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            work();
            ::_exit(0);
        }
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return status;
    }
};

TEST_F(TraceTest, EveryMessageIsOneLineAndStopCutsTheFile)
{
    const std::string huge(3000000, 'h'); // more than the file grows by in one step
    write("a.trace", QByteArray(100000, 'x'));
    VQMUtility::traceMessage("before the start");
    ASSERT_TRUE(VQMUtility::startTrace(path("a.trace"), nullptr));
    for (const char *text :
         {"first\nsecond\r\n", "", static_cast<const char *>(nullptr), huge.c_str(), "last"})
        VQMUtility::traceMessage(text);
    VQMUtility::stopTrace();
    VQMUtility::traceMessage("after the end");

    EXPECT_TRUE(contents("a.trace").endsWith("last\n"));
    std::vector<std::string> texts;
    for (const Line &line : parsed(contents("a.trace")))
        texts.push_back(line.text);
    EXPECT_THAT(texts, ::testing::ElementsAre("first\\nsecond\\r\\n", "", huge, "last"));
}

TEST_F(TraceTest, SpansHaveSubjectsOfAnyLength)
{
    ASSERT_TRUE(VQMUtility::startTrace(path("a.trace"), nullptr));
    const std::string longName(500, 'n');
    for (const char *subject : {"name", longName.c_str(), ""})
        TraceSpan("test", "kind", subject).setOutcome(subject);
    VQMUtility::stopTrace();
    std::vector<std::string> texts;
    for (const Line &line : parsed(contents("a.trace")))
        texts.push_back(line.text);
    EXPECT_THAT(texts, ::testing::ElementsAre("begin test: kind: name", "end test: name",
                                              "begin test: kind: " + longName, "end test: " + longName,
                                              "begin test: kind", "end test"));
}

TEST_F(TraceTest, SpansTellWhatWasThrown)
{
    const auto thrown = [](const std::exception_ptr &exception) {
        TraceSpan("test", "subject").setThrown(exception);
    };
    thrown(std::make_exception_ptr("without a trace"));
    ASSERT_TRUE(VQMUtility::startTrace(path("a.trace"), nullptr));
    thrown(std::make_exception_ptr(std::runtime_error("an error")));
    thrown(std::make_exception_ptr("a text"));
    thrown(std::make_exception_ptr(5));
    VQMUtility::stopTrace();
    std::vector<std::string> ends;
    for (const Line &line : parsed(contents("a.trace"))) {
        if (line.text.starts_with("end"))
            ends.push_back(line.text);
    }
    EXPECT_THAT(ends, ::testing::ElementsAre("end test: threw an error", "end test: threw a text",
                                             "end test: threw an exception of unknown type"));
}

TEST_F(TraceTest, LinesOfSeveralThreadsStandInOrder)
{
    constexpr int threads = 4, messages = 5000; // past the first step of growth
    ASSERT_TRUE(VQMUtility::startTrace(path("a.trace"), nullptr));
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int i = 0; i < threads; ++i)
        workers.emplace_back([] {
            for (int k = 0; k < messages; ++k)
                VQMUtility::traceMessage(("message of some length, number " + std::to_string(k)).c_str());
        });
    for (std::thread &worker : workers)
        worker.join();
    VQMUtility::stopTrace();

    std::map<std::string, int> next;
    double time = 0;
    for (const Line &line : parsed(contents("a.trace"))) {
        ASSERT_GE(line.seconds, time);
        time = line.seconds;
        ASSERT_EQ(line.text, "message of some length, number " + std::to_string(next[line.thread]++));
    }
    ASSERT_EQ(next.size(), static_cast<std::size_t>(threads));
    for (const auto &[thread, count] : next)
        EXPECT_EQ(count, messages) << thread;
}

TEST_F(TraceTest, AListenerHearsEveryLineWithAndWithoutAFile)
{
    struct Listener : VQMTraceListener
    {
        std::vector<std::string> lines;
        std::int64_t time = 0;
        void traced(std::int64_t microseconds, int thread, const char *threadName, const char *text) override
        {
            EXPECT_GE(microseconds, time);
            EXPECT_EQ(thread, ::gettid());
            EXPECT_NE(*threadName, '\0');
            time = microseconds;
            lines.push_back(text);
        }
    } listener;
    EXPECT_FALSE(VQMUtility::isTracing());
    VQMUtility::setTraceListener(&listener);
    VQMUtility::traceMessage("to the listener");
    ASSERT_TRUE(VQMUtility::startTrace(path("a.trace"), nullptr));
    VQMUtility::traceMessage("to both\n");
    VQMUtility::stopTrace();
    EXPECT_TRUE(VQMUtility::isTracing());
    VQMUtility::traceMessage("to the listener again");
    VQMUtility::setTraceListener(nullptr);
    EXPECT_FALSE(VQMUtility::isTracing());
    VQMUtility::traceMessage("to nobody");
    EXPECT_THAT(listener.lines,
                ::testing::ElementsAre("to the listener", "to both\n", "to the listener again"));
    EXPECT_TRUE(contents("a.trace").endsWith("] to both\\n\n"));
    EXPECT_EQ(contents("a.trace").count('\n'), 1);
}

TEST_F(TraceTest, LinesSurviveTheKillingOfTheProcess)
{
    constexpr std::size_t messages = 40000;
    const int status = inChild([this] {
        VQMUtility::startTrace(path("a.trace"), nullptr);
        for (std::size_t k = 0; k < messages; ++k)
            VQMUtility::traceMessage(std::to_string(k).c_str());
        ::raise(SIGKILL);
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    QByteArray trace = contents("a.trace");
    const auto end = trace.indexOf('\0');
    EXPECT_EQ(trace.count('\0'), trace.size() - end); // only the unused rest
    trace.truncate(end);
    const auto lines = parsed(trace);
    ASSERT_EQ(lines.size(), messages);
    for (std::size_t k = 0; k < messages; ++k)
        ASSERT_EQ(lines[k].text, std::to_string(k));
}

TEST_F(TraceTest, FullDiskEndsTheTraceAndNothingElse)
{
    int status = -1;
    const std::string said = standardError([&] {
        status = inChild([this] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit = {3 << 20, 3 << 20}; // as a disk that is full then
            ::setrlimit(RLIMIT_FSIZE, &limit);
            VQMUtility::startTrace(path("a.trace"), nullptr);
            for (int k = 0; k < 100000; ++k)
                VQMUtility::traceMessage("0123456789012345678901234567890123456789");
        });
    });
    EXPECT_EQ(status, 0);
    EXPECT_THAT(said, ::testing::EndsWith("a.trace: File too large; tracing ends here\n"));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
    EXPECT_GT(contents("a.trace").size(), 2 << 20);
    EXPECT_TRUE(contents("a.trace").endsWith("0123456789\n"));
}

TEST_F(TraceTest, FilesThatCannotBeWrittenAreNamedAndOthersLeftAlone)
{
    QString error;
    EXPECT_FALSE(VQMUtility::startTrace(path("missing/a.trace"), &error));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("missing/a.trace: No such file"));
    EXPECT_FALSE(VQMUtility::startTrace(path(""), &error));
    EXPECT_FALSE(VQMUtility::startTrace("/dev/null", &error));
    EXPECT_TRUE(QFile::exists("/dev/null"));
}

TEST_F(TraceTest, SameFileNameDoesNotDisturbAProcessThatTracesThere)
{
    const pid_t other = ::fork();
    if (other == 0) {
        VQMUtility::startTrace(path("a.trace"), nullptr);
        ::raise(SIGSTOP);
        VQMUtility::traceMessage("of the other process");
        ::_exit(0);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, WUNTRACED), other);
    ASSERT_TRUE(VQMUtility::startTrace(path("a.trace"), nullptr));
    VQMUtility::traceMessage("of this one");
    ::kill(other, SIGCONT);
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    VQMUtility::stopTrace();
    EXPECT_TRUE(contents("a.trace").endsWith("] of this one\n"));
}

} // namespace

} // namespace Orvia

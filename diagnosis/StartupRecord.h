#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Orvia {

/// What a start-up did, as its trace lines tell: told line by line, during the run or from a file afterwards.
/// A line of no interest costs a comparison or two and no allocation. Text of any kind is taken; what does
/// not fit into what came before is ignored. Times are microseconds since the trace began. Not thread-safe.
class StartupRecord
{
public:
    enum class Operation
    {
        Phase,
        Read,
        Open,
        LookUp,
        Describe, ///< the call of VQMGetModuleInfo; without lines of its own, as are Create and Terminate
        Create,
        Initialize,
        StartGui, ///< of the Gui module, which may bring others up in it
        Stage,
        Terminate,
        Close,
        Own, ///< a span of a module's own making
    };

    struct Span
    {
        Operation operation;
        std::string
            subject; ///< "Database", "Database.so", "modules finished: Database", "OPERATION: SUBJECT"
        int module;  ///< index into modules(), -1: none
        int thread;  ///< index into threads()
        int parent;  ///< index into spans(), -1: none
        std::int64_t begin;
        std::int64_t end;   ///< -1: has not ended
        std::string result; ///< what came of it, empty: success

        bool isOpen() const { return end < 0; }
    };

    enum class Outcome
    {
        NeverReached, ///< listed, but not opened
        Skipped,
        NotOpened,
        NoEntryPoint,
        Refused,
        Created, ///< there and in order, but not initialized
        Up,
        Failed,
    };

    struct Module
    {
        std::string path;
        std::string name; ///< empty until it has described itself
        std::optional<int> id;
        Outcome outcome = Outcome::NeverReached;
        std::string reason;        ///< why the outcome is not Up, empty if there is nothing to tell
        std::vector<int> statuses; ///< of every initialize() that returned
        bool isOpened = false;     ///< has been, at some time
        bool isClosed = false;
        bool isTerminated = false;
        bool isIdCertain = false; ///< a line with id and name has been matched to it

        std::string fileName() const;
        std::string label() const { return name.empty() ? fileName() : name; }
    };

    struct Thread
    {
        int id;
        std::string name;
        std::vector<int> open; ///< the spans it is in, the innermost last
        std::int64_t lastSpoke = 0;
        int discovered = -1; ///< the module whose discovery it is at
    };

    struct Stage
    {
        std::string name;  ///< "modules finished"
        std::string parts; ///< "Scpi Gui", empty where the stage has none
        std::int64_t time;
        int thread;
    };

    enum class OwnSpans
    {
        Ignore, ///< nothing grows while the instrument runs
        Keep,
    };

    explicit StartupRecord(OwnSpans ownSpans = OwnSpans::Ignore) : m_ownSpans(ownSpans) {}

    /// Line feeds in the text as they are or written \n. Times do not decrease.
    void addLine(std::int64_t microseconds, int thread, std::string_view threadName, std::string_view text);

    const std::vector<Thread> &threads() const { return m_threads; } ///< those that had a span
    const std::deque<Span> &spans() const { return m_spans; }        ///< in the order they began
    const std::deque<Module> &modules() const { return m_modules; }  ///< in the order of the load list
    const std::vector<Stage> &stages() const { return m_stages; }
    const std::vector<std::string> &missingModules() const { return m_missingModules; } ///< required ones
    const std::vector<std::string> &configurationErrors() const { return m_configurationErrors; }
    std::int64_t lastTime() const { return m_lastTime; }
    std::optional<int> exitCode() const { return m_exitCode; } ///< empty: not ended in order (yet)

    /// When "complete finished" had been told to all; else when the shutdown began; else the last line's
    /// time.
    std::int64_t startupEnd() const;
    bool isComplete() const; ///< "complete finished" was reached
    /// All is up that should be, and nothing but exit code 0 has been seen.
    bool wentWell() const;

    /// The span that a thread is in, not one of a module's making; -1: none.
    int currentSpan(const Thread &thread) const;
    /// The same for the thread that spoke last; a thread in a module's code comes before one that is not.
    int currentSpan() const;
    /// The current span in words, such as "initialize Database"; empty when there is none.
    std::string current() const;

private:
    bool takeSpanLine(std::string_view text, Thread *speaker);
    bool takeDiscoveryLine(std::string_view text, Thread *speaker);
    bool takePassLine(std::string_view text, Thread *speaker);
    bool takeErrorLine(std::string_view text, const Thread *speaker);
    void begin(std::string_view operation, std::string_view subject, Thread *speaker);
    void end(std::string_view operation, std::string_view result, Thread *speaker);
    void noteEnd(const Span &span, Thread *speaker);
    void noteEntryPointMissing(std::string_view symbol, Thread *speaker);
    void push(Operation operation, std::string subject, int module, Thread *speaker);
    void pop(Thread *speaker, Operation operation, std::string_view result);
    void settle(int module, Outcome outcome, std::string reason);

    Thread *speakerOf(int id, std::string_view name, std::string_view text);
    Module *discoveredBy(const Thread *speaker);
    bool isInModule(const Thread &thread) const;
    bool keeps(Operation operation) const;
    int addModule(std::string_view path);
    void setName(int module, std::string_view name);
    int moduleToOpen(std::string_view path);
    int moduleToClose(std::string_view path) const;
    int moduleToTerminate(std::string_view name) const;
    int moduleOf(std::string_view idAndName);

    const OwnSpans m_ownSpans;
    std::vector<Thread> m_threads;
    std::deque<Span> m_spans;
    std::deque<Module> m_modules;
    // Entries stay when a module's name turns out to be another. Those of one key are in order of m_modules.
    std::multimap<std::string_view, int> m_modulesByPath; ///< keys are the modules' own
    std::multimap<std::string, int, std::less<>> m_modulesByName;
    std::vector<Stage> m_stages;
    std::vector<std::string> m_missingModules;
    std::vector<std::string> m_configurationErrors;
    std::int64_t m_lastTime = 0;
    std::int64_t m_shutdownBegin = -1;
    std::optional<int> m_exitCode;
};

/// "initialize", as in the trace; empty for Own.
std::string_view operationName(StartupRecord::Operation operation);

/// Own for every name that is none of the others'.
StartupRecord::Operation operationOf(std::string_view name);

/// Whether a module's code runs in it because the start-up called it.
bool isModuleCall(StartupRecord::Operation operation);

/// "initialize Database", "open Absent.so"; of a phase its name.
std::string inWords(const StartupRecord::Span &span);

} // namespace Orvia

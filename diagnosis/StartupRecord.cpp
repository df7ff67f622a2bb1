#include "diagnosis/StartupRecord.h"

#include "diagnosis/TextPieces.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Orvia {

namespace {

using Operation = StartupRecord::Operation;
using Outcome = StartupRecord::Outcome;

/// In the order of Operation; Own has no row.
constexpr std::string_view operations[] = {"phase",    "read",      "open",       "look-up",
                                           "describe", "create",    "initialize", "start-gui",
                                           "stage",    "terminate", "close"};

constexpr std::size_t maxDepth = 200; ///< whoever is deeper in spans has forgotten to end them

constexpr std::string_view moduleInfoSymbol = "VQMGetModuleInfo";
constexpr std::string_view createInstanceSymbol = "VQMCreateModuleInterfaceInstance";

/// "4 Database, parts -1" and "modules finished: 4 Database", without the numbers.
std::string subjectOf(Operation operation, std::string_view text)
{
    if (operation == Operation::Open || operation == Operation::Close)
        return std::string(fileNameOf(text));
    std::string subject;
    if (operation == Operation::Stage) {
        const std::string_view label = behind(text, ": ");
        subject.reserve(text.size());
        subject = text.substr(0, text.size() - label.size());
        text = label;
    } else if (operation == Operation::Initialize || operation == Operation::StartGui) {
        text = text.substr(0, text.rfind(", parts "));
    } else {
        return std::string(text);
    }
    takeNumber(&text);
    return subject.append(trimmed(text));
}

} // namespace

std::string StartupRecord::Module::fileName() const
{
    return std::string(fileNameOf(path));
}

void StartupRecord::addLine(std::int64_t microseconds, int thread, std::string_view threadName,
                            std::string_view text)
{
    m_lastTime = std::max(m_lastTime, microseconds);
    m_exitCode.reset(); // that line is the last
    Thread *speaker = speakerOf(thread, threadName, text);
    if (speaker != nullptr)
        speaker->lastSpoke = m_lastTime;
    takeSpanLine(text, speaker) || takeDiscoveryLine(text, speaker) || takePassLine(text, speaker) ||
        takeErrorLine(text, speaker);
}

bool StartupRecord::takeSpanLine(std::string_view text, Thread *speaker)
{
    if (take(&text, "begin "))
        begin(before(text, ": "), behind(text, ": "), speaker);
    else if (take(&text, "end "))
        end(before(text, ": "), behind(text, ": "), speaker);
    else if (take(&text, "exit: "))
        m_exitCode = wholeNumber(text);
    else
        return false;
    return true;
}

bool StartupRecord::takeDiscoveryLine(std::string_view text, Thread *speaker)
{
    if (take(&text, "listed: ")) {
        addModule(text);
        return true;
    }
    if (take(&text, "skipped: ")) {
        settle(addModule(text), Outcome::Skipped, "");
        return true;
    }
    Module *module = discoveredBy(speaker);
    if (module == nullptr)
        return false;
    const bool isHead = text.starts_with("Module Name "), isFoot = text.starts_with("Module Id ");
    if (isHead || isFoot) {
        pop(speaker, isHead ? Operation::Describe : Operation::Create, "");
        const std::string_view value = trimmed(behind(text, ":"));
        if (isHead)
            setName(speaker->discovered, value);
        else
            module->id = wholeNumber(value);
        if (isFoot && module->outcome == Outcome::NeverReached)
            module->outcome = Outcome::Created;
        return true;
    }
    if (take(&text, "Could not access the interface method ")) {
        noteEntryPointMissing(text.substr(0, text.rfind("of module ")), speaker);
        return true;
    }
    if (text.starts_with("Could not load module")) {
        if (module->outcome != Outcome::NotOpened)
            settle(speaker->discovered, Outcome::NotOpened, "not enough memory");
        return true;
    }
    std::string_view reason = behind(text, " module will be unloaded because ");
    if (reason.empty())
        return false;
    take(&reason, "it ") || take(&reason, "of ");
    pop(speaker, Operation::Describe, "");
    settle(speaker->discovered, Outcome::Refused,
           std::string(reason.substr(0, reason.size() - reason.ends_with('!'))));
    return true;
}

/// What is said while the modules are initialized and terminated, pass by pass.
bool StartupRecord::takePassLine(std::string_view text, Thread *speaker)
{
    if (take(&text, "Stage: ")) {
        pop(speaker, Operation::Terminate, "threw"); // has not said "...ok"
        const std::string_view name = before(text, "    Parts: ");
        if (name.starts_with("terminate") && m_shutdownBegin < 0)
            m_shutdownBegin = m_lastTime;
        m_stages.push_back({std::string(name), std::string(trimmed(behind(text, "    Parts: "))), m_lastTime,
                            static_cast<int>(speaker - m_threads.data())});
        return true;
    }
    if (take(&text, "Terminate ")) {
        const bool isPlugIn = take(&text, "Plugin: ");
        const std::string_view name = isPlugIn ? text : text.substr(0, text.rfind("..."));
        pop(speaker, Operation::Terminate, "threw");
        if (const int module = moduleToTerminate(name); module >= 0) {
            m_modules[module].isTerminated = true;
            push(Operation::Terminate, std::string(name), module, speaker);
            if (m_shutdownBegin < 0)
                m_shutdownBegin = m_lastTime;
        }
        return true;
    }
    if (text != "...ok" || speaker == nullptr)
        return false;
    pop(speaker, Operation::Terminate, "");
    return true;
}

bool StartupRecord::takeErrorLine(std::string_view text, const Thread *speaker)
{
    if (take(&text, "Could not find")) {
        const std::size_t start = text.find_first_not_of("\\n\n ");
        if (start == std::string_view::npos)
            return true;
        text.remove_prefix(start);
        m_missingModules.emplace_back(trimmed(before(before(text, "\n"), "\\n")));
        return true;
    }
    bool isError = text.starts_with("No load list") || text.starts_with("List is empty or parser error") ||
                   text.find(": XML error: ") != std::string_view::npos;
    if (!isError && speaker != nullptr && !speaker->open.empty()) {
        const Span &span = m_spans[speaker->open.back()];
        isError = span.operation == Operation::Read && text.starts_with(span.subject + ": ");
    }
    if (isError)
        m_configurationErrors.emplace_back(trimmed(text));
    return isError;
}

void StartupRecord::begin(std::string_view name, std::string_view subject, Thread *speaker)
{
    const Operation operation = operationOf(name);
    if (!keeps(operation) || speaker->open.size() >= maxDepth)
        return;
    if (operation == Operation::Own) {
        push(operation, std::string(name).append(": ").append(subject), -1, speaker);
        return;
    }
    int module = -1;
    if (operation == Operation::Initialize)
        module = moduleOf(subject.substr(0, subject.rfind(", parts ")));
    else if (operation == Operation::StartGui)
        module = moduleOf(subject);
    else if (operation == Operation::Stage)
        module = moduleOf(behind(subject, ": "));
    else if (isInModule(*speaker))
        module = -1; // one that opens libraries of its own
    else if (operation == Operation::Open)
        speaker->discovered = module = moduleToOpen(subject);
    else if (operation == Operation::LookUp)
        module = speaker->discovered;
    else if (operation == Operation::Close)
        module = moduleToClose(subject);
    if (operation == Operation::Initialize && module >= 0 && m_modules[module].outcome == Outcome::Up)
        m_modules[module].outcome = Outcome::Created; // until this part is up as well
    push(operation, subjectOf(operation, subject), module, speaker);
}

void StartupRecord::end(std::string_view name, std::string_view result, Thread *speaker)
{
    const Operation operation = operationOf(name);
    if (speaker == nullptr || !keeps(operation))
        return;
    const auto match = std::find_if(speaker->open.rbegin(), speaker->open.rend(), [&](int index) {
        const Span &span = m_spans[index];
        return span.operation == operation &&
               (operation != Operation::Own || before(span.subject, ": ") == name);
    });
    if (match == speaker->open.rend())
        return;
    const int index = *match;
    // What is still open inside has been left by an exception.
    while (speaker->open.back() != index)
        pop(speaker, m_spans[speaker->open.back()].operation, "threw");
    pop(speaker, m_spans[index].operation, result);
}

/// What the end of a span, just popped, says about its module.
void StartupRecord::noteEnd(const Span &span, Thread *speaker)
{
    Module *module = span.module < 0 ? nullptr : &m_modules[span.module];
    if (span.operation == Operation::Read && span.result == "failed") {
        const bool isKnown = std::any_of(m_configurationErrors.begin(), m_configurationErrors.end(),
                                         [&](const auto &error) { return error.starts_with(span.subject); });
        if (!isKnown)
            m_configurationErrors.push_back(span.subject + ": could not be read");
    }
    if (module == nullptr)
        return;
    if (span.operation == Operation::Open && !span.result.empty())
        settle(span.module, Outcome::NotOpened, span.result);
    if (span.operation == Operation::Close)
        module->isClosed = true;
    if (span.operation == Operation::LookUp) {
        if (!span.result.empty())
            module->reason = span.result;
        else if (span.subject == moduleInfoSymbol)
            push(Operation::Describe, module->fileName(), span.module, speaker);
        else if (span.subject == createInstanceSymbol)
            push(Operation::Create, module->fileName(), span.module, speaker);
    }
    if (span.operation == Operation::Initialize) {
        std::string_view status = span.result;
        if (span.result.empty())
            module->statuses.push_back(0);
        else if (take(&status, "status "))
            module->statuses.push_back(wholeNumber(status).value_or(-1));
        if (span.result.empty() && module->outcome == Outcome::Created)
            module->outcome = Outcome::Up;
    }
    if (!span.result.empty() && isModuleCall(span.operation) && span.operation >= Operation::Initialize) {
        std::string what = span.operation == Operation::Stage
                               ? "stage " + std::string(before(span.subject, ": "))
                               : std::string(operationName(span.operation));
        std::string_view status = span.result;
        what += take(&status, "status ") ? " returned " : " ";
        settle(span.module, Outcome::Failed, what.append(status));
    }
}

void StartupRecord::noteEntryPointMissing(std::string_view symbol, Thread *speaker)
{
    const bool isInfo = symbol == moduleInfoSymbol;
    pop(speaker, isInfo ? Operation::Describe : Operation::Create, "threw or gave nothing");
    const std::string &lookUp = m_modules[speaker->discovered].reason;
    settle(speaker->discovered, Outcome::NoEntryPoint,
           lookUp.empty() ? std::string(symbol) + " threw or gave nothing" : lookUp);
}

void StartupRecord::push(Operation operation, std::string subject, int module, Thread *speaker)
{
    const int parent = speaker->open.empty() ? -1 : speaker->open.back();
    speaker->open.push_back(static_cast<int>(m_spans.size()));
    m_spans.push_back({operation, std::move(subject), module, static_cast<int>(speaker - m_threads.data()),
                       parent, m_lastTime, -1, ""});
}

/// Ends the innermost span that is not a module's own, with all inside it, if it is of this operation.
void StartupRecord::pop(Thread *speaker, Operation operation, std::string_view result)
{
    const auto match = std::find_if(speaker->open.rbegin(), speaker->open.rend(), [&](int index) {
        return operation == Operation::Own || m_spans[index].operation != Operation::Own;
    });
    if (match == speaker->open.rend() || m_spans[*match].operation != operation)
        return;
    const int index = *match;
    int innermost;
    do {
        innermost = speaker->open.back();
        m_spans[innermost].end = m_lastTime;
        speaker->open.pop_back();
    } while (innermost != index);
    m_spans[index].result = result;
    noteEnd(m_spans[index], speaker);
}

void StartupRecord::settle(int module, Outcome outcome, std::string reason)
{
    Module &settled = m_modules[module];
    if (settled.outcome == Outcome::Failed) // the first failure is what counts
        return;
    settled.outcome = outcome;
    settled.reason = std::move(reason);
}

std::string_view operationName(StartupRecord::Operation operation)
{
    return operation == Operation::Own ? std::string_view() : operations[static_cast<std::size_t>(operation)];
}

Operation operationOf(std::string_view name)
{
    return static_cast<Operation>(std::find(std::begin(operations), std::end(operations), name) -
                                  std::begin(operations));
}

bool isModuleCall(Operation operation)
{
    return operation >= Operation::Describe && operation <= Operation::Terminate;
}

std::string inWords(const StartupRecord::Span &span)
{
    if (span.operation == Operation::Phase || span.operation == Operation::Own)
        return span.subject;
    return std::string(operationName(span.operation)) + ' ' + span.subject;
}

} // namespace Orvia

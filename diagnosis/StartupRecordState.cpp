#include "diagnosis/StartupRecord.h"
#include "diagnosis/TextPieces.h"

#include <algorithm>

// What is known so far, and which thread and module a line is about.

namespace Orvia {

namespace {

constexpr std::string_view completeFinished = "complete finished";

} // namespace

std::int64_t StartupRecord::startupEnd() const
{
    std::int64_t complete = -1;
    for (const Stage &stage : m_stages) {
        if (stage.name == completeFinished)
            complete = stage.time;
    }
    if (complete < 0)
        return m_shutdownBegin < 0 ? m_lastTime : m_shutdownBegin;
    for (const Span &span : m_spans) {
        if (span.operation == Operation::Stage && span.subject.starts_with(completeFinished))
            complete = std::max(complete, span.isOpen() ? m_lastTime : span.end);
    }
    return complete;
}

bool StartupRecord::isComplete() const
{
    return std::any_of(m_stages.begin(), m_stages.end(),
                       [](const Stage &stage) { return stage.name == completeFinished; });
}

bool StartupRecord::wentWell() const
{
    return m_exitCode.value_or(0) == 0 && m_missingModules.empty() && m_configurationErrors.empty() &&
           std::none_of(m_modules.begin(), m_modules.end(), [](const Module &module) {
               return module.outcome == Outcome::NotOpened || module.outcome == Outcome::NoEntryPoint ||
                      module.outcome == Outcome::Failed;
           });
}

int StartupRecord::currentSpan(const Thread &thread) const
{
    const auto match = std::find_if(thread.open.rbegin(), thread.open.rend(),
                                    [this](int index) { return m_spans[index].operation != Operation::Own; });
    return match == thread.open.rend() ? -1 : *match;
}

int StartupRecord::currentSpan() const
{
    const Thread *current = nullptr;
    for (const Thread &thread : m_threads) {
        if (currentSpan(thread) < 0)
            continue;
        const bool isNearer =
            current == nullptr || isInModule(thread) > isInModule(*current) ||
            (isInModule(thread) == isInModule(*current) && thread.lastSpoke >= current->lastSpoke);
        if (isNearer)
            current = &thread;
    }
    return current == nullptr ? -1 : currentSpan(*current);
}

std::string StartupRecord::current() const
{
    const int span = currentSpan();
    return span < 0 ? std::string() : inWords(m_spans[span]);
}

/// The thread of this line; null when it is not known and the line is no reason to get to know it.
StartupRecord::Thread *StartupRecord::speakerOf(int id, std::string_view name, std::string_view text)
{
    const auto known = std::find_if(m_threads.begin(), m_threads.end(), [&](const Thread &thread) {
        return thread.id == id && thread.name == name;
    });
    if (known != m_threads.end())
        return &*known;
    const bool beginsSpan = take(&text, "begin ")
                                ? keeps(operationOf(before(text, ": ")))
                                : text.starts_with("Terminate ") || text.starts_with("Stage: ");
    if (!beginsSpan)
        return nullptr;
    Thread thread;
    thread.id = id;
    thread.name = name;
    return &m_threads.emplace_back(std::move(thread));
}

StartupRecord::Module *StartupRecord::discoveredBy(const Thread *speaker)
{
    return speaker == nullptr || speaker->discovered < 0 ? nullptr : &m_modules[speaker->discovered];
}

bool StartupRecord::isInModule(const Thread &thread) const
{
    return std::any_of(thread.open.begin(), thread.open.end(), [this](int index) {
        return isModuleCall(m_spans[index].operation) || m_spans[index].operation == Operation::Open;
    });
}

bool StartupRecord::keeps(Operation operation) const
{
    return m_ownSpans == OwnSpans::Keep || operation != Operation::Own;
}

int StartupRecord::addModule(std::string_view path)
{
    const int index = static_cast<int>(m_modules.size());
    Module &module = m_modules.emplace_back();
    module.path = path;
    m_modulesByPath.emplace(module.path, index);
    return index;
}

void StartupRecord::setName(int module, std::string_view name)
{
    m_modules[module].name = name;
    m_modulesByName.emplace(name, module);
}

/// The first of this path that is still to be opened; one that was not listed is added.
int StartupRecord::moduleToOpen(std::string_view path)
{
    const auto [first, last] = m_modulesByPath.equal_range(path);
    const auto match = std::find_if(first, last, [this](const auto &entry) {
        return !m_modules[entry.second].isOpened && m_modules[entry.second].outcome != Outcome::Skipped;
    });
    const int index = match != last ? match->second : addModule(path);
    m_modules[index].isOpened = true;
    return index;
}

int StartupRecord::moduleToClose(std::string_view path) const
{
    const auto [first, last] = m_modulesByPath.equal_range(path);
    const auto match = std::find_if(first, last, [this](const auto &entry) {
        return m_modules[entry.second].isOpened && !m_modules[entry.second].isClosed;
    });
    return match == last ? -1 : match->second;
}

/// Modules of a name are terminated in descending order of their ids.
int StartupRecord::moduleToTerminate(std::string_view name) const
{
    int found = -1;
    const auto [first, last] = m_modulesByName.equal_range(name);
    for (auto entry = first; entry != last; ++entry) {
        const Module &module = m_modules[entry->second];
        if (module.name == name && module.id && !module.isTerminated &&
            (found < 0 || module.id >= m_modules[found].id))
            found = entry->second;
    }
    return found;
}

/// "ID NAME": the module of both; else of the name alone or the id alone, as the two may not be what they
/// were at discovery, and from then on of both.
int StartupRecord::moduleOf(std::string_view label)
{
    const std::optional<int> id = takeNumber(&label);
    const std::string_view name = trimmed(label);
    const auto [first, last] = m_modulesByName.equal_range(name);
    const auto known =
        std::find_if(first, last, [&](const auto &entry) { return id && m_modules[entry.second].id == id; });
    if (known != last) {
        m_modules[known->second].isIdCertain = true;
        return known->second;
    }
    const auto find = [this](const auto &isIt) {
        const auto match = std::find_if(m_modules.begin(), m_modules.end(), [&](const Module &module) {
            return module.id && !module.isIdCertain && isIt(module);
        });
        return match == m_modules.end() ? -1 : static_cast<int>(match - m_modules.begin());
    };
    int module = find([name](const Module &candidate) { return candidate.name == name; });
    if (module < 0)
        module = find([id](const Module &candidate) { return candidate.id == id; });
    if (module >= 0) {
        m_modules[module].isIdCertain = true;
        setName(module, name);
        m_modules[module].id = id;
    }
    return module;
}

} // namespace Orvia

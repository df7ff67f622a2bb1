#include "platform/ErrorManager.h"

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>

namespace Orvia {

namespace {

constexpr int queueOverflow = -350;
constexpr int deviceSpecificError = -300;

struct State
{
    std::mutex mutex;
    std::map<int, const CErrorManager::SErrorDefinition *> tables;
    std::deque<CErrorManager::Announcement> queue;
    unsigned int lastId = 0;
};

State &state()
{
    static State &instance = *new State;
    return instance;
}

/// Null when no table holds the code. The mutex is held.
const CErrorManager::SErrorDefinition *findDefinition(int code)
{
    for (const auto &[registrationId, table] : state().tables)
        for (const auto *row = table; row->code != -1; ++row)
            if (row->code == code)
                return row;
    return nullptr;
}

/// Enters the announcement behind the last one. The mutex is held.
void append(CErrorManager::Announcement announcement)
{
    std::deque<CErrorManager::Announcement> &queue = state().queue;
    if (queue.size() == CErrorManager::queueLength) {
        queue.pop_back();
        announcement = {0, queueOverflow, 1, queueOverflow, QStringLiteral("Queue overflow"), QString()};
    }
    announcement.id = ++state().lastId;
    queue.push_back(announcement);
}

} // namespace

void CErrorManager::registerErrors(const SErrorDefinition *table, int registrationId)
{
    const std::lock_guard lock(state().mutex);
    if (table != nullptr)
        state().tables[registrationId] = table;
    else
        state().tables.erase(registrationId);
}

void CErrorManager::signal(int code, const QString &text)
{
    const std::lock_guard lock(state().mutex);
    if (const SErrorDefinition *row = findDefinition(code))
        append({0, code, row->severity, row->scpiCode, QString::fromUtf8(row->text), text});
    else
        append({0, code, 1, deviceSpecificError, QStringLiteral("Unknown error code %1").arg(code), text});
}

void CErrorManager::destroyAnnouncement(unsigned int id)
{
    const std::lock_guard lock(state().mutex);
    std::erase_if(state().queue, [id](const Announcement &entry) { return entry.id == id; });
}

void CErrorManager::destroyAllAnnouncements()
{
    const std::lock_guard lock(state().mutex);
    state().queue.clear();
}

QList<CErrorManager::Announcement> CErrorManager::announcements() const
{
    const std::lock_guard lock(state().mutex);
    return QList<Announcement>(state().queue.begin(), state().queue.end());
}

bool CErrorManager::takeScpiError(Announcement *taken)
{
    const std::lock_guard lock(state().mutex);
    std::deque<Announcement> &queue = state().queue;
    const auto oldest = std::find_if(queue.begin(), queue.end(),
                                     [](const Announcement &entry) { return entry.scpiCode != 0; });
    if (oldest == queue.end())
        return false;
    *taken = *oldest;
    queue.erase(oldest);
    return true;
}

CErrorManager *ErrorManager()
{
    static CErrorManager *const manager = new CErrorManager;
    return manager;
}

} // namespace Orvia

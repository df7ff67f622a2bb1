#include "platform/VQMProgressBar.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace Orvia {

namespace {

struct Item
{
    bool isButton = false;
    QString title;
    int percent = 0;
    std::function<void()> pressed;
};

struct State
{
    std::mutex mutex; ///< held while handlers are called, never while a button's function runs
    std::vector<VQMProgressHandler *> handlers;
    std::map<int, Item> items;
    int nextId = 0;
};

State &state()
{
    static State &instance = *new State;
    return instance;
}

void announce(VQMProgressHandler *handler, int id, const Item &item)
{
    if (item.isButton)
        handler->buttonCreated(id, item.title, item.pressed);
    else
        handler->barCreated(id, item.title);
}

int create(Item item)
{
    const std::lock_guard lock(state().mutex);
    const int id = state().nextId++;
    const Item &created = state().items[id] = std::move(item);
    for (VQMProgressHandler *handler : state().handlers)
        announce(handler, id, created);
    return id;
}

void remove(int id, bool isButton)
{
    Item removed; // destroyed without the mutex: its function may hold anything
    const std::lock_guard lock(state().mutex);
    const auto found = state().items.find(id);
    if (found == state().items.end() || found->second.isButton != isButton)
        return;
    removed = std::move(found->second);
    state().items.erase(found);
    for (VQMProgressHandler *handler : state().handlers) {
        if (isButton)
            handler->buttonRemoved(id);
        else
            handler->barRemoved(id);
    }
}

} // namespace

VQMProgressHandler::~VQMProgressHandler() = default;

bool VQMProgressBar::isProgressHandlerInstalled()
{
    const std::lock_guard lock(state().mutex);
    return !state().handlers.empty();
}

int VQMProgressBar::createProgressBar(const char *title, bool /*flag*/)
{
    return create({false, QString::fromUtf8(title), 0, {}});
}

void VQMProgressBar::updateProgressBar(int id, int percent, bool /*flag*/)
{
    const std::lock_guard lock(state().mutex);
    const auto found = state().items.find(id);
    if (found == state().items.end() || found->second.isButton)
        return;
    found->second.percent = percent;
    for (VQMProgressHandler *handler : state().handlers)
        handler->barUpdated(id, percent);
}

void VQMProgressBar::removeProgressBar(int id, bool /*flag*/)
{
    remove(id, false);
}

int VQMProgressBar::createButton(const char *title, std::function<void()> pressed)
{
    return create({true, QString::fromUtf8(title), 0, std::move(pressed)});
}

void VQMProgressBar::removeButton(int id, bool /*flag*/)
{
    remove(id, true);
}

void VQMProgressBar::installProgressHandler(VQMProgressHandler *handler)
{
    const std::lock_guard lock(state().mutex);
    state().handlers.push_back(handler);
    for (const auto &[id, item] : state().items) {
        announce(handler, id, item);
        if (!item.isButton)
            handler->barUpdated(id, item.percent);
    }
}

void VQMProgressBar::removeProgressHandler(VQMProgressHandler *handler)
{
    const std::lock_guard lock(state().mutex);
    std::erase(state().handlers, handler);
}

} // namespace Orvia

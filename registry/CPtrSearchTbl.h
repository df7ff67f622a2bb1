#pragma once

#include <QList>

#include <new>
#include <utility>

namespace Orvia {

template <typename Key, typename T>
class CPtrSearchTblIterator;

/// Table of (key, pointer) pairs, filled by appending, sorted once, then searched by halving and walked in
/// key order.
///
/// append() keeps no order: call sortTbl(0, count - 1) before find(). The table registers every live
/// iterator, so that an iterator outliving it is detached rather than left dangling. Not thread-safe.
template <typename Key, typename T>
class CPtrSearchTbl
{
public:
    /// An entry; unused ones have the key 0 and no value.
    struct keyedPair
    {
        Key key = 0;
        T *value = nullptr;
    };

    /// `valuesOwned`: the table deletes the values it drops.
    /// `entriesOwned`: the table may grow and frees the entry array.
    CPtrSearchTbl(bool valuesOwned, bool entriesOwned) : ownsValues(valuesOwned), ownsEntries(entriesOwned) {}
    ~CPtrSearchTbl();
    CPtrSearchTbl(const CPtrSearchTbl &) = delete;
    CPtrSearchTbl &operator=(const CPtrSearchTbl &) = delete;

    /// Enters the pair behind the last one; false when there is no room left.
    bool append(Key key, T *value);
    /// Sorts entries[lo..hi] by key, ascending, not stable. A range outside the array moves nothing.
    void sortTbl(int lo, int hi);
    /// Changes the length of the array; false when it cannot be had. Drops what no longer fits.
    bool resize(int n);
    /// The value entered with `key`, or null. Needs a sorted table.
    T *find(Key key) const;

    keyedPair *entries = nullptr; ///< `capacity` pairs; those from `count` on hold key 0 and null
    int count = 0;
    int cursor = -1; ///< index of the pair entered last
    int capacity = 0;
    bool ownsValues;
    bool ownsEntries;

private:
    friend class CPtrSearchTblIterator<Key, T>;
    static constexpr int growth = 32;

    QList<CPtrSearchTblIterator<Key, T> *> m_iterators; ///< registered, not owned
};

/// Walks a table. Stands before the first entry until toFirst() or toLast() is called; answers null outside
/// the table's entries and once the table is gone.
template <typename Key, typename T>
class CPtrSearchTblIterator
{
public:
    explicit CPtrSearchTblIterator(CPtrSearchTbl<Key, T> *walked) : table(walked)
    {
        if (table != nullptr)
            table->m_iterators.append(this);
    }
    virtual ~CPtrSearchTblIterator()
    {
        if (table != nullptr)
            table->m_iterators.removeOne(this);
        table = nullptr;
    }
    CPtrSearchTblIterator(const CPtrSearchTblIterator &) = delete;
    CPtrSearchTblIterator &operator=(const CPtrSearchTblIterator &) = delete;

    // Each moves and returns the value now stood at, so that a walk is
    //     for (T *value = it.toFirst(); value != nullptr; value = it.next())
    T *toFirst() { return moveTo(0); }
    T *toLast() { return moveTo(table != nullptr ? table->count - 1 : index); }
    T *next() { return moveTo(table != nullptr && index < table->count ? index + 1 : index); }
    T *previous() { return moveTo(table != nullptr && index >= 0 ? index - 1 : index); }
    T *current() const
    {
        return table != nullptr && index >= 0 && index < table->count ? table->entries[index].value : nullptr;
    }

    CPtrSearchTbl<Key, T> *table; ///< null once the table is gone
    int index = -1;

private:
    T *moveTo(int position)
    {
        if (table != nullptr)
            index = position;
        return current();
    }
};

template <typename Key, typename T>
CPtrSearchTbl<Key, T>::~CPtrSearchTbl()
{
    for (CPtrSearchTblIterator<Key, T> *iterator : std::as_const(m_iterators))
        iterator->table = nullptr;
    if (ownsValues) {
        for (int i = 0; i < count; ++i)
            delete std::exchange(entries[i].value, nullptr);
    }
    if (ownsEntries)
        delete[] entries;
}

template <typename Key, typename T>
bool CPtrSearchTbl<Key, T>::append(Key key, T *value)
{
    if (entries == nullptr) {
        entries = new (std::nothrow) keyedPair[growth];
        if (entries == nullptr) {
            capacity = 0;
            cursor = -1;
            return false;
        }
        capacity = growth;
        count = 0;
        cursor = 0;
    }
    if (count >= capacity && ownsEntries)
        resize(capacity + growth);
    if (count >= capacity)
        return false;
    cursor = count;
    entries[count++] = {key, value};
    return true;
}

template <typename Key, typename T>
void CPtrSearchTbl<Key, T>::sortTbl(int lo, int hi)
{
    if (entries == nullptr || lo < 0 || hi >= capacity || hi < lo)
        return;
    const Key pivot = entries[(lo + hi) / 2].key;
    int i = lo;
    int j = hi;
    do {
        while (entries[i].key < pivot)
            ++i;
        while (pivot < entries[j].key)
            --j;
        if (i <= j)
            std::swap(entries[i++], entries[j--]);
    } while (i <= j);
    if (lo < j)
        sortTbl(lo, j);
    if (i < hi)
        sortTbl(i, hi);
}

template <typename Key, typename T>
bool CPtrSearchTbl<Key, T>::resize(int n)
{
    if (n < 1 || !ownsEntries)
        return false;
    keyedPair *resized = new (std::nothrow) keyedPair[n];
    if (resized == nullptr)
        return false;
    for (int i = 0; i < capacity && i < n; ++i)
        resized[i] = entries[i];
    if (ownsValues) {
        for (int i = n; i < capacity; ++i)
            delete entries[i].value;
    }
    if (count > n)
        count = n;
    if (cursor >= n)
        cursor = n - 1;
    capacity = n;
    delete[] entries;
    entries = resized;
    return true;
}

template <typename Key, typename T>
T *CPtrSearchTbl<Key, T>::find(Key key) const
{
    int low = 0;
    int high = entries != nullptr ? count - 1 : -1;
    while (low <= high) {
        const int middle = (low + high) / 2;
        if (key < entries[middle].key)
            high = middle - 1;
        else if (entries[middle].key < key)
            low = middle + 1;
        else
            return entries[middle].value;
    }
    return nullptr;
}

} // namespace Orvia

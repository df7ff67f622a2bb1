#include "registry/CPtrSearchTbl.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <vector>

namespace Orvia {
namespace {

using testing::Each;
using testing::ElementsAre;

/// Counts the living, so that a table that forgets or destroys too much is seen.
struct Value
{
    Value() { ++living; }
    virtual ~Value() { --living; }
    static int living;
};
int Value::living = 0;

using Table = CPtrSearchTbl<int, Value>;
using Iterator = CPtrSearchTblIterator<int, Value>;

class CPtrSearchTblTest : public testing::Test
{
protected:
    CPtrSearchTblTest() { Value::living = 0; }

    static Value *enter(Table &table, int key)
    {
        auto *value = new Value;
        EXPECT_TRUE(table.append(key, value));
        return value;
    }
    static void fill(Table &table, int count)
    {
        for (int i = 0; i < count; ++i)
            enter(table, i);
    }
    static std::vector<int> keys(const Table &table, int from = 0, int to = -1)
    {
        std::vector<int> found;
        for (int i = from; i < (to < 0 ? table.count : to); ++i)
            found.push_back(table.entries[i].key);
        return found;
    }
};

TEST_F(CPtrSearchTblTest, SortKeepsEachValueBesideItsKey)
{
    Table table(true, true);
    table.sortTbl(0, -1); // nothing there yet
    EXPECT_EQ(table.find(0), nullptr);
    std::map<int, const Value *> entered;
    for (int key : {10001, 3, 10000, 4, 9, 7, 10002, 12, 1})
        entered[key] = enter(table, key);

    table.sortTbl(0, table.capacity); // out of range: nothing moves
    table.sortTbl(-1, 8);
    table.sortTbl(5, 4);
    EXPECT_THAT(keys(table), ElementsAre(10001, 3, 10000, 4, 9, 7, 10002, 12, 1));

    table.sortTbl(0, table.count - 1);
    EXPECT_THAT(keys(table), ElementsAre(1, 3, 4, 7, 9, 12, 10000, 10001, 10002));
    for (const auto &[key, value] : entered) {
        EXPECT_EQ(table.find(key), value) << key;
        EXPECT_EQ(table.find(key + 20000), nullptr);
    }
    EXPECT_EQ(table.find(5), nullptr);
    EXPECT_EQ(table.find(0), nullptr);
}

TEST_F(CPtrSearchTblTest, SortsAnyArrangementAndTheRangeGivenOnly)
{
    const std::vector<std::vector<int>> arrangements = {
        {2, 1},          {1, 2, 3, 4, 5, 6},       {6, 5, 4, 3, 2, 1},
        {1, 1, 1, 1, 1}, {3, 1, 3, 1, 2, 3, 2, 1}, {-5, 7, -9, 0}};
    for (std::vector<int> arrangement : arrangements) {
        Table table(true, true);
        for (int key : arrangement)
            enter(table, key);
        table.sortTbl(0, table.count - 1);
        std::sort(arrangement.begin(), arrangement.end());
        EXPECT_EQ(keys(table), arrangement);
    }
    Table table(true, true);
    for (int key : {9, 8, 7, 6, 5})
        enter(table, key);
    table.sortTbl(1, 3);
    EXPECT_THAT(keys(table), ElementsAre(9, 6, 7, 8, 5));
}

TEST_F(CPtrSearchTblTest, GrowsBy32AndKeepsFreeSlotsEmpty)
{
    Table table(true, true);
    EXPECT_EQ(table.entries, nullptr);
    EXPECT_EQ(table.capacity, 0);
    EXPECT_EQ(table.cursor, -1);
    fill(table, 32);
    EXPECT_EQ(table.capacity, 32);
    enter(table, 32);
    EXPECT_EQ(table.capacity, 64);
    EXPECT_EQ(table.count, 33);
    EXPECT_EQ(table.cursor, 32);
    EXPECT_EQ(table.find(31), table.entries[31].value);
    EXPECT_THAT(keys(table, 33, 64), Each(0));
    for (int i = 33; i < 64; ++i)
        EXPECT_EQ(table.entries[i].value, nullptr);
}

TEST_F(CPtrSearchTblTest, ShrinkingDropsAndDeletesWhatNoLongerFits)
{
    Table table(true, true);
    fill(table, 20);
    EXPECT_FALSE(table.resize(0));
    EXPECT_FALSE(table.resize(-32));
    EXPECT_EQ(table.capacity, 32);
    ASSERT_TRUE(table.resize(16));
    EXPECT_EQ(table.capacity, 16);
    EXPECT_EQ(table.count, 16);
    EXPECT_EQ(table.cursor, 15);
    EXPECT_EQ(Value::living, 16);
    EXPECT_TRUE(table.resize(18));
    EXPECT_EQ(table.count, 16);
    EXPECT_EQ(table.cursor, 15);
    EXPECT_EQ(table.entries[17].value, nullptr);
    EXPECT_TRUE(table.resize(18)); // the same again changes nothing
    EXPECT_EQ(Value::living, 16);
}

TEST_F(CPtrSearchTblTest, OwnershipFlagsDecideWhatIsDeletedAndWhetherItGrows)
{
    for (bool ownsValues : {false, true}) {
        Value::living = 0;
        std::vector<std::unique_ptr<Value>> kept;
        {
            Table table(ownsValues, true);
            for (int i = 0; i < 3; ++i) {
                Value *value = enter(table, i);
                if (!ownsValues)
                    kept.emplace_back(value);
            }
            EXPECT_TRUE(table.append(3, nullptr));
            EXPECT_TRUE(table.resize(2));
            EXPECT_EQ(Value::living, ownsValues ? 2 : 3);
        }
        EXPECT_EQ(Value::living, ownsValues ? 0 : 3);
    }
    Table::keyedPair *entries = nullptr;
    {
        Table fixed(true, false);
        fill(fixed, 32);
        Value refused;
        EXPECT_FALSE(fixed.append(32, &refused));
        EXPECT_FALSE(fixed.resize(64));
        EXPECT_EQ(fixed.count, 32);
        EXPECT_EQ(fixed.cursor, 31);
        entries = fixed.entries;
    }
    EXPECT_EQ(entries[0].value, nullptr); // deleted and cleared, the array left to its owner
    EXPECT_EQ(Value::living, 0);
    delete[] entries;
}

TEST_F(CPtrSearchTblTest, IteratorsWalkBothWaysAndStopAtTheEnds)
{
    Table table(true, true);
    Iterator walk(&table);
    EXPECT_EQ(walk.index, -1);
    EXPECT_EQ(walk.current(), nullptr);
    EXPECT_EQ(walk.toLast(), nullptr);
    fill(table, 3);

    std::vector<int> seen;
    for (Value *value = walk.toFirst(); value != nullptr; value = walk.next())
        seen.push_back(walk.index);
    for (Value *value = walk.toLast(); value != nullptr; value = walk.previous())
        seen.push_back(walk.index);
    EXPECT_THAT(seen, ElementsAre(0, 1, 2, 2, 1, 0));
    EXPECT_EQ(walk.previous(), nullptr);
    EXPECT_EQ(walk.index, -1); // no further than that
    EXPECT_EQ(walk.next(), table.entries[0].value);
    walk.toLast();
    walk.next();
    walk.next();
    EXPECT_EQ(walk.index, 3);
    EXPECT_EQ(walk.previous(), table.entries[2].value);
}

TEST_F(CPtrSearchTblTest, IteratorsOutliveTheirTable)
{
    auto table = std::make_unique<Table>(true, true);
    fill(*table, 3);
    Iterator first(table.get());
    alignas(Iterator) std::array<unsigned char, sizeof(Iterator)> storage;
    auto *gone = new (storage.data()) Iterator(table.get());
    Iterator second(table.get());
    gone->~Iterator();
    storage.fill(0x5a);
    second.toLast();
    table.reset();
    EXPECT_THAT(storage, Each(0x5a)); // the table did not reach for the one that was gone
    for (Iterator *detached : {&first, &second}) {
        EXPECT_EQ(detached->table, nullptr);
        EXPECT_EQ(detached->current(), nullptr);
        EXPECT_EQ(detached->toFirst(), nullptr);
        EXPECT_EQ(detached->next(), nullptr);
        EXPECT_EQ(detached->previous(), nullptr);
    }
    EXPECT_EQ(first.index, -1);
    EXPECT_EQ(second.index, 2);
    const Iterator never(nullptr);
    EXPECT_EQ(never.current(), nullptr);
}

} // namespace
} // namespace Orvia

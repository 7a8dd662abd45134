#include "Lib/Util/FS/ChunkedList.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

namespace Zendra::LW {
namespace {

using List = ChunkedList<int>;

constexpr int chunkSize = List::chunkSize;

List Numbers(int count)
{
    List list;
    for (int number = 0; number < count; ++number)
        list.append(number);
    return list;
}

std::vector<int> ElementsOf(const List& list)
{
    std::vector<int> elements;
    for (const List::Chunk& chunk : list.GetChunks())
        elements.insert(elements.end(), chunk.begin(), chunk.end());
    return elements;
}

std::vector<int> ChunkSizes(const List& list)
{
    std::vector<int> sizes;
    for (const List::Chunk& chunk : list.GetChunks())
        sizes.push_back(static_cast<int>(chunk.size()));
    return sizes;
}

TEST(ChunkedListTest, IsEmptyAtFirst)
{
    EXPECT_EQ(List().size(), 0);
    EXPECT_TRUE(List().GetChunks().isEmpty());
}

TEST(ChunkedListTest, FillsOneChunkAfterTheOther)
{
    EXPECT_EQ(ChunkSizes(Numbers(chunkSize)), std::vector<int>{chunkSize});

    const List list = Numbers(2 * chunkSize + 1);

    EXPECT_EQ(ChunkSizes(list), (std::vector<int>{chunkSize, chunkSize, 1}));
    EXPECT_EQ(list.size(), 2 * chunkSize + 1);
}

TEST(ChunkedListTest, HasElementsByTheirIndex)
{
    List list = Numbers(3 * chunkSize);

    for (const int index : {0, 1, chunkSize - 1, chunkSize, 2 * chunkSize, 3 * chunkSize - 1}) {
        EXPECT_EQ(list.at(index), index);
        list[index] = -index;
        EXPECT_EQ(list.at(index), -index);
    }
}

TEST(ChunkedListTest, InsertsAtTheEnd)
{
    List list;
    list.insert(0, 7);
    list.insert(1, 8);

    EXPECT_EQ(ElementsOf(list), (std::vector<int>{7, 8}));
}

TEST(ChunkedListTest, SplitsAChunkOfMoreThanTwiceTheSize)
{
    List list = Numbers(chunkSize + 1);
    for (int i = 0; i < chunkSize; ++i)
        list.insert(0, -i);
    ASSERT_EQ(ChunkSizes(list), (std::vector<int>{2 * chunkSize, 1}));

    list.insert(5, 0);

    EXPECT_EQ(ChunkSizes(list), (std::vector<int>{chunkSize, chunkSize + 1, 1}));
    EXPECT_EQ(list.size(), 2 * chunkSize + 2);
}

TEST(ChunkedListTest, HasNoEmptyChunk)
{
    List list = Numbers(2 * chunkSize + 1);

    for (int i = 0; i < chunkSize; ++i)
        list.removeAt(chunkSize);

    EXPECT_EQ(ChunkSizes(list), (std::vector<int>{chunkSize, 1}));
    EXPECT_EQ(list.at(chunkSize), 2 * chunkSize);
}

TEST(ChunkedListTest, SharesTheChunksThatDidNotChange)
{
    List list = Numbers(3 * chunkSize);
    const List copy = list;

    list[chunkSize] = -1;
    list.insert(chunkSize, -2);
    list.removeAt(chunkSize + 5);

    EXPECT_EQ(ElementsOf(copy), ElementsOf(Numbers(3 * chunkSize)));
    EXPECT_EQ(copy.size(), 3 * chunkSize);
    EXPECT_EQ(list.GetChunks().at(0).constData(), copy.GetChunks().at(0).constData());
    EXPECT_NE(list.GetChunks().at(1).constData(), copy.GetChunks().at(1).constData());
    EXPECT_EQ(list.GetChunks().at(2).constData(), copy.GetChunks().at(2).constData());
}

TEST(ChunkedListTest, BehavesLikeAVector)
{
    std::mt19937 generator(11);
    List list = Numbers(3000);
    std::vector<int> expected(3000);
    std::iota(expected.begin(), expected.end(), 0);

    // First it grows, then it shrinks.
    for (int step = 0; step < 12000; ++step) {
        const int index = static_cast<int>(generator() % (expected.size() + 1));
        const bool grows = generator() % 4 < (step < 6000 ? 3u : 1u);
        if (grows || index == list.size()) {
            list.insert(index, step);
            expected.insert(expected.begin() + index, step);
        } else {
            list.removeAt(index);
            expected.erase(expected.begin() + index);
        }
    }

    EXPECT_EQ(list.size(), static_cast<int>(expected.size()));
    EXPECT_EQ(ElementsOf(list), expected);
    for (const int size : ChunkSizes(list)) {
        EXPECT_GT(size, 0);
        EXPECT_LE(size, 2 * chunkSize);
    }
}

} // namespace
} // namespace Zendra::LW

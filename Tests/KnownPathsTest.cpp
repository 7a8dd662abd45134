#include "Lib/Util/FS/KnownPaths.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <random>

namespace Zendra::LW {
namespace {

QString Path(int number)
{
    return QStringLiteral("/folder/%1").arg(number);
}

/// Paths that were listed in the order of their numbers, and inserted in another.
KnownPaths Listed(const QList<int>& inserted, int count)
{
    KnownPaths known;
    const int first = known.AddPlaces(count);
    for (const int number : inserted)
        known.Insert(Path(number), first + number);
    return known;
}

TEST(KnownPathsSetTest, IsEmptyAtFirst)
{
    const KnownPaths known;

    EXPECT_EQ(known.size(), 0);
    EXPECT_FALSE(known.Contains(Path(1)));
    EXPECT_FALSE(KnownPathFinder(known).Find(Path(1)));
}

TEST(KnownPathsSetTest, IsEmptyWhenItHasFreePlacesOnly)
{
    const KnownPaths known = Listed({}, 100);

    EXPECT_EQ(known.size(), 0);
    EXPECT_FALSE(known.Contains(Path(1)));
    EXPECT_FALSE(known.Contains(QString()));
    EXPECT_FALSE(KnownPathFinder(known).Find(Path(1)));
}

TEST(KnownPathsSetTest, HasAPathOnce)
{
    KnownPaths known;

    known.Insert(Path(1));
    known.Insert(Path(1));
    known.Insert(Path(1), known.AddPlaces(1));

    EXPECT_EQ(known.size(), 1);
    known.Remove(Path(1));
    EXPECT_EQ(known.size(), 0);
    EXPECT_FALSE(known.Contains(Path(1)));
}

TEST(KnownPathsSetTest, IgnoresTheRemovalOfAnUnknownPath)
{
    KnownPaths known;
    known.Remove(Path(1));
    known.Insert(Path(1));

    known.Remove(Path(2));

    EXPECT_EQ(known.size(), 1);
    EXPECT_TRUE(known.Contains(Path(1)));
}

TEST(KnownPathsSetTest, PutsAPathAtTheEndIfItsPlaceIsTaken)
{
    KnownPaths known = Listed({0, 1}, 2);

    known.Insert(Path(2), 0);

    EXPECT_EQ(known.size(), 3);
    KnownPathFinder finder(known);
    EXPECT_TRUE(finder.Find(Path(1)));
    EXPECT_TRUE(finder.IsNext(Path(2)));
}

TEST(KnownPathsSetTest, IsCopiedAsAValue)
{
    KnownPaths known = Listed({0, 1}, 2);
    const KnownPaths copy = known;

    known.Remove(Path(0));
    known.Insert(Path(2));

    EXPECT_EQ(copy.size(), 2);
    EXPECT_TRUE(copy.Contains(Path(0)));
    EXPECT_FALSE(copy.Contains(Path(2)));
}

TEST(KnownPathsSetTest, DropsPlacesThatStayedFree)
{
    KnownPaths known;
    known.Insert(Path(1));

    for (int i = 0; i < 1000; ++i)
        known.AddPlaces(100);

    EXPECT_LT(known.AddPlaces(0), 200);
    EXPECT_TRUE(known.Contains(Path(1)));
}

TEST(KnownPathsSetTest, DropsThePlacesOfRemovedPaths)
{
    KnownPaths known;
    for (int number = 0; number < 1000; ++number) {
        known.Insert(Path(number));
        known.Remove(Path(number));
    }

    EXPECT_LT(known.AddPlaces(0), 50);
    EXPECT_EQ(known.size(), 0);
}

TEST(KnownPathsSetTest, AddsPlacesBehindThoseItHas)
{
    KnownPaths known = Listed({0, 1}, 2);

    const int first = known.AddPlaces(2);
    known.Insert(Path(3), first + 1);
    known.Insert(Path(2), first);

    KnownPathFinder finder(known);
    for (const int number : {0, 1, 2, 3}) {
        EXPECT_TRUE(finder.IsNext(Path(number))) << number;
        EXPECT_TRUE(finder.Find(Path(number))) << number;
    }
}

/// A search for an unknown path ends at an empty cell of the hash table.
TEST(KnownPathsSetTest, IsNeverFull)
{
    KnownPaths known;
    const int first = known.AddPlaces(8);
    for (int number = 0; number < 8; ++number)
        known.Insert(Path(number));

    for (int number = 8; number < 16; ++number)
        known.Insert(Path(number), first + number - 8);

    EXPECT_EQ(known.size(), 16);
    EXPECT_FALSE(known.Contains(Path(16)));
}

/// However the paths share cells of the hash table, and however often it grows.
TEST(KnownPathsSetTest, BehavesLikeASet)
{
    std::mt19937 generator(7);
    for (const int range : {8, 40, 3000}) {
        KnownPaths known;
        QSet<QString> expected;
        for (int step = 0; step < 20000; ++step) {
            const int number = static_cast<int>(generator() % static_cast<unsigned int>(range));
            if (generator() % 2 == 0) {
                known.Insert(Path(number));
                expected.insert(Path(number));
            } else {
                known.Remove(Path(number));
                expected.remove(Path(number));
            }
            ASSERT_EQ(known.size(), expected.size());
        }
        KnownPathFinder finder(known);
        for (int number = 0; number < range; ++number) {
            ASSERT_EQ(known.Contains(Path(number)), expected.contains(Path(number)))
                << range << ' ' << number;
            ASSERT_EQ(finder.Find(Path(number)), expected.contains(Path(number))) << range << ' ' << number;
        }
    }
}

TEST(KnownPathFinderTest, FindsPathsInTheOrderOfTheListing)
{
    const KnownPaths known = Listed({3, 1, 0, 2}, 4);
    KnownPathFinder finder(known);

    for (int number = 0; number < 4; ++number) {
        EXPECT_TRUE(finder.IsNext(Path(number)));
        EXPECT_FALSE(finder.IsNext(Path(number + 1)));
        EXPECT_TRUE(finder.Find(Path(number)));
    }
    EXPECT_FALSE(finder.IsNext(Path(4)));
    EXPECT_FALSE(finder.Find(Path(4)));
}

TEST(KnownPathFinderTest, FindsPathsInAnyOtherOrder)
{
    const KnownPaths known = Listed({0, 1, 2, 3}, 4);
    KnownPathFinder finder(known);

    for (const int number : {3, 1, 1, 0, 2})
        EXPECT_TRUE(finder.Find(Path(number))) << number;
}

TEST(KnownPathFinderTest, GoesOnBehindThePathThatItFound)
{
    const KnownPaths known = Listed({0, 1, 2, 3}, 4);
    KnownPathFinder finder(known);

    ASSERT_TRUE(finder.Find(Path(2)));

    EXPECT_TRUE(finder.IsNext(Path(3)));
    ASSERT_TRUE(finder.Find(Path(0)));
    EXPECT_TRUE(finder.IsNext(Path(1)));
}

TEST(KnownPathFinderTest, StaysWhereItIsAtAnUnknownPath)
{
    const KnownPaths known = Listed({0, 1}, 2);
    KnownPathFinder finder(known);
    ASSERT_TRUE(finder.Find(Path(0)));

    EXPECT_FALSE(finder.Find(QStringLiteral("/folder/new")));

    EXPECT_TRUE(finder.IsNext(Path(1)));
}

TEST(KnownPathFinderTest, PassesOverFreePlaces)
{
    KnownPaths known = Listed({1, 2, 4, 6}, 8);
    known.Remove(Path(4));
    KnownPathFinder finder(known);

    for (const int number : {1, 2, 6}) {
        EXPECT_TRUE(finder.IsNext(Path(number))) << number;
        EXPECT_TRUE(finder.Find(Path(number))) << number;
    }
    EXPECT_FALSE(finder.Find(Path(7)));
}

TEST(KnownPathFinderTest, FindsLaterPathsLast)
{
    KnownPaths known = Listed({0, 1}, 2);
    known.Remove(Path(0));
    known.Insert(Path(2));
    KnownPathFinder finder(known);

    EXPECT_TRUE(finder.Find(Path(1)));
    EXPECT_TRUE(finder.IsNext(Path(2)));
}

TEST(KnownPathFinderTest, KeepsTheOrderWhenFreePlacesAreDropped)
{
    KnownPaths known = Listed({0, 999, 1}, 1000);
    known.Insert(QStringLiteral("/folder/new"));
    KnownPathFinder finder(known);

    for (const QString& path : {Path(0), Path(1), Path(999), QStringLiteral("/folder/new")}) {
        EXPECT_TRUE(finder.IsNext(path)) << qPrintable(path);
        EXPECT_TRUE(finder.Find(path)) << qPrintable(path);
    }
}

} // namespace
} // namespace Zendra::LW

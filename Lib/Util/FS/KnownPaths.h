#pragma once

#include <QString>
#include <QVector>

#include <limits>

namespace Zendra::LW {

/// A set of paths that remembers the order in which the file system lists them. KnownPathFinder finds a path
/// in that order by one comparison; in any other order it uses a hash table.
///
/// A path takes some 20 bytes besides its string, which is shared with its other copies.
class KnownPaths
{
public:
    /// The end of the order, as a place.
    static constexpr int end = std::numeric_limits<int>::max();

    /// Adds free places at the end of the order. When most places are free, it drops those first. Places that
    /// it returned earlier are then out of date; Insert() with one of them only puts the path elsewhere.
    /// @return the first of the new places
    int AddPlaces(int pathCount);
    /// Does nothing if the path is in the set.
    /// @param place  one from AddPlaces(); if it is not free, the path goes to the end of the order
    void Insert(const QString& path, int place = end);
    /// Does nothing if the path is not in the set.
    void Remove(const QString& path);

    bool Contains(const QString& path) const { return Find(path) != -1; }
    int size() const { return count; }

private:
    friend class KnownPathFinder;

    bool IsFree(int place) const;
    int Find(const QString& path) const;
    int CellOf(const QString& path) const;
    int HomeCell(const QString& path) const;
    void ReserveCells(int pathCount);
    void DropFreePlaces();
    void FillCells();
    void EmptyCell(int cell);

    QVector<QString> places; ///< the paths in the order of the listing; null where a place is free
    QVector<int> cells;      ///< a hash table with linear probing: indices of places, -1 in empty cells
    int count = 0;
};

/// Looks for one path after the other. Fast while they come in the order of the set.
class KnownPathFinder
{
public:
    /// @param knownPaths  not owned; must not change while the finder is in use
    explicit KnownPathFinder(const KnownPaths& knownPaths);

    bool Find(const QString& path);
    /// Whether the path follows, in the order of the set, the one that was found last.
    bool IsNext(const QString& path) const;

private:
    void MoveTo(int place);

    const KnownPaths& known;
    int next = 0; ///< a place that is not free, or behind all places
};

} // namespace Zendra::LW

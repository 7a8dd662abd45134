#include "Lib/Util/FS/KnownPaths.h"

#include <functional>
#include <string_view>

namespace Zendra::LW {
namespace {

constexpr int emptyCell = -1;

} // namespace

int KnownPaths::AddPlaces(int pathCount)
{
    // A place that became free is not used again: the order would no longer be that of the listing.
    if (places.size() > 2 * count + 16)
        DropFreePlaces();
    const int first = static_cast<int>(places.size());
    places.resize(first + pathCount);
    ReserveCells(count + pathCount);
    return first;
}

void KnownPaths::Insert(const QString& path, int place)
{
    if (Contains(path))
        return;
    if (!IsFree(place))
        place = AddPlaces(1);
    ReserveCells(count + 1);
    cells[CellOf(path)] = place;
    places[place] = path;
    ++count;
}

void KnownPaths::Remove(const QString& path)
{
    if (count == 0)
        return;
    const int cell = CellOf(path);
    const int place = cells.at(cell);
    if (place == emptyCell)
        return;
    EmptyCell(cell);
    places[place] = QString();
    --count;
}

bool KnownPaths::IsFree(int place) const
{
    return place < places.size() && places.at(place).isNull();
}

/// @return the place of a path, or -1
int KnownPaths::Find(const QString& path) const
{
    return count == 0 ? -1 : cells.at(CellOf(path));
}

/// The cell that has a path, or the empty one that would.
int KnownPaths::CellOf(const QString& path) const
{
    int cell = HomeCell(path);
    while (cells.at(cell) != emptyCell && places.at(cells.at(cell)) != path)
        cell = (cell + 1) & (static_cast<int>(cells.size()) - 1);
    return cell;
}

int KnownPaths::HomeCell(const QString& path) const
{
    const std::u16string_view text(reinterpret_cast<const char16_t*>(path.utf16()),
                                   static_cast<std::size_t>(path.size()));
    return static_cast<int>(std::hash<std::u16string_view>()(text)
                            & (static_cast<std::size_t>(cells.size()) - 1));
}

void KnownPaths::ReserveCells(int pathCount)
{
    int wanted = 16;
    while (wanted < 2 * pathCount)
        wanted *= 2;
    if (wanted <= cells.size())
        return;
    cells = QVector<int>(wanted);
    FillCells();
}

void KnownPaths::DropFreePlaces()
{
    places.removeAll(QString());
    FillCells();
}

void KnownPaths::FillCells()
{
    cells.fill(emptyCell);
    for (int place = 0; place < places.size(); ++place) {
        if (!places.at(place).isNull())
            cells[CellOf(places.at(place))] = place;
    }
}

/// Moves entries behind the cell into it, so that a search from their home cells still reaches them.
void KnownPaths::EmptyCell(int cell)
{
    const int mask = static_cast<int>(cells.size()) - 1;
    for (int other = (cell + 1) & mask; cells.at(other) != emptyCell; other = (other + 1) & mask) {
        const int home = HomeCell(places.at(cells.at(other)));
        if (((other - home) & mask) >= ((other - cell) & mask)) {
            cells[cell] = cells.at(other);
            cell = other;
        }
    }
    cells[cell] = emptyCell;
}

KnownPathFinder::KnownPathFinder(const KnownPaths& knownPaths) : known(knownPaths)
{
    MoveTo(0);
}

bool KnownPathFinder::Find(const QString& path)
{
    const int place = IsNext(path) ? next : known.Find(path);
    if (place == -1)
        return false;
    MoveTo(place + 1);
    return true;
}

bool KnownPathFinder::IsNext(const QString& path) const
{
    return next < known.places.size() && known.places.at(next) == path;
}

/// Moves to a place, or to the next one that is not free.
void KnownPathFinder::MoveTo(int place)
{
    next = place;
    while (known.IsFree(next))
        ++next;
}

} // namespace Zendra::LW

#pragma once

#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace Zendra::LW {

/// Decides which files to keep; an empty one keeps every file.
using FilePredicate = std::function<bool(const QFileInfo&)>;

/// The arguments of StartWatching().
struct WatchSettings
{
    QStringList nameFilters;
    FilePredicate filter;
    QString dirPath;
    unsigned int depth = 0;
};

/// A copy of a predicate. Copies of the result share its state.
///
/// Callers keep such a copy during the call, since a predicate may stop the watch and so destroy the stored
/// one.
inline FilePredicate MakeSharedPredicate(const FilePredicate& predicate)
{
    if (!predicate)
        return {};
    return [shared = std::make_shared<const FilePredicate>(predicate)](const QFileInfo& info) {
        return (*shared)(info);
    };
}

inline bool Accepts(const FilePredicate& predicate, const QFileInfo& info)
{
    return !predicate || predicate(info);
}

} // namespace Zendra::LW

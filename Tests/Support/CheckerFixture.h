#pragma once

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace Tests {

using Predicate = std::function<bool(const QFileInfo&)>;

inline QString Text(const char* text)
{
    return QString::fromUtf8(text);
}

inline QStringList Filters(std::initializer_list<const char*> patterns)
{
    QStringList filters;
    for (const char* pattern : patterns)
        filters.append(Text(pattern));
    return filters;
}

/// The paths of a snapshot as they stand in it, without the root's.
inline std::vector<std::string> Paths(const Zendra::LW::DirectoryChecker& checker, const TempFolder& folder)
{
    const QString prefix = folder.Path() + QLatin1Char('/');
    std::vector<std::string> paths;
    for (const QFileInfo& info : checker.GetFileInfoList()) {
        const QString path = info.filePath();
        paths.push_back((path.startsWith(prefix) ? path.mid(prefix.size()) : path).toStdString());
    }
    return paths;
}

/// The names of the files in a snapshot, in its order.
inline std::vector<std::string> Names(const Zendra::LW::DirectoryChecker& checker)
{
    std::vector<std::string> names;
    for (const QFileInfo& info : checker.GetFileInfoList())
        names.push_back(info.fileName().toStdString());
    return names;
}

/// A checker of a folder of its own, and the log of its signals.
class CheckerFixture : public testing::Test
{
protected:
    void Start(unsigned int depth = 0, const QStringList& nameFilters = {}, const Predicate& filter = {})
    {
        ASSERT_TRUE(checker.StartWatching(folder.Path(), nameFilters, filter, depth));
        signalLog.Clear();
    }

    std::vector<std::string> Snapshot() const { return Paths(checker, folder); }

    /// What a further pass reports.
    const std::vector<std::string>& Check()
    {
        signalLog.Clear();
        checker.CheckFolder();
        return signalLog.Entries();
    }

    const TempFolder folder;
    Zendra::LW::DirectoryChecker checker;
    SignalLog signalLog{checker, folder.Path()};
};

} // namespace Tests

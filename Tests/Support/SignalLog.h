#pragma once

#include <QFileInfo>
#include <QObject>
#include <QString>

#include <string>
#include <vector>

namespace Zendra::LW {
class IDirectoryWatcher;
}

namespace Tests {

/// Records every signal of a watcher, in the order in which they come, while both of them live.
///
///     SignalLog signalLog(watcher, folder.Path());
///     folder.Write("sub/a.txt");
///     ASSERT_TRUE(signalLog.WaitFor("FileAdded sub/a.txt"));
///     EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted", "FileAdded sub/a.txt"));
///
/// Slots are called in the order of their connection: those that were connected before the log have run when
/// it records a signal.
class SignalLog
{
public:
    /// @param rootPath  paths below it are written relative to it, all others as the signal has them
    explicit SignalLog(const Zendra::LW::IDirectoryWatcher& watcher, const QString& rootPath = QString());
    SignalLog(const SignalLog&) = delete;
    SignalLog& operator=(const SignalLog&) = delete;

    /// One text a signal: "WatchingStarted", "FileAdded sub/a.txt", "PathChanged /folder".
    const std::vector<std::string>& Entries() const { return entries; }
    /// The entries of one signal, by its name.
    std::vector<std::string> EntriesOf(const std::string& signal) const;
    /// The argument of the latest file signal; an empty one when none has come.
    QFileInfo LastInfo() const { return infos.empty() ? QFileInfo() : infos.back(); }
    /// The arguments of the file signals.
    const std::vector<QFileInfo>& Infos() const { return infos; }
    int Count(const std::string& entry) const;
    bool Contains(const std::string& entry) const { return Count(entry) > 0; }

    /// Runs the event loop until the entry has come; @return whether it has
    bool WaitFor(const std::string& entry) const;
    /// Runs the event loop until there are at least so many entries.
    bool WaitForCount(size_t count) const;
    void Clear();

private:
    void Add(const char* signal, const QString& path);
    void AddFile(const char* signal, const QFileInfo& info);

    QString root;
    std::vector<std::string> entries;
    std::vector<QFileInfo> infos;
    QObject connections; ///< last: is destroyed first, and ends the connections
};

} // namespace Tests

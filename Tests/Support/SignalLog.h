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

/// Writes down every signal of a watcher, in the order in which they come, while both of them live.
///
///     SignalLog signalLog(watcher, folder.Path());
///     folder.Write("sub/a.txt");
///     ASSERT_TRUE(signalLog.WaitFor("FileAdded sub/a.txt"));
///     EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted", "FileAdded sub/a.txt"));
///
/// Slots are called in the order of their connection: what was connected before the log has already run when
/// a signal is written down.
class SignalLog
{
public:
    /// @param root  stripped from the paths below it, which are otherwise written exactly as the signal has
    ///              them
    explicit SignalLog(const Zendra::LW::IDirectoryWatcher& watcher, const QString& root = QString());
    SignalLog(const SignalLog&) = delete;
    SignalLog& operator=(const SignalLog&) = delete;

    /// One text a signal: "WatchingStarted", "FileAdded sub/a.txt", "PathChanged /folder".
    const std::vector<std::string>& Entries() const { return entries; }
    /// Those of one signal only, by its name.
    std::vector<std::string> EntriesOf(const std::string& signal) const;
    /// The argument of the last of the three file signals; one that is empty when none has come.
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

    QString rootPrefix;
    std::vector<std::string> entries;
    std::vector<QFileInfo> infos;
    QObject connections; ///< last: goes first, and the connections with it
};

} // namespace Tests

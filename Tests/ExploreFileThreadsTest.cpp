#include "Util/ExploreFile.h"

#include "Tests/Support/Desktop.h"
#include "Tests/Support/SessionBusFixture.h"
#include "Tests/Support/Threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>

using Tests::Desktop;
using Zendra::Util::ExploreFile;

namespace {

constexpr int threadCount = 4;
constexpr int callsOfAThread = 50;

/// Calls made from threads that are not the one of the GUI.
class ExploreFileThreadsTest : public Tests::SessionBusFixture
{
protected:
    void CallFromEveryThread(const std::function<void(int thread)>& call) const
    {
        Tests::RunOnThreads(threadCount, [&call](int thread) {
            for (int i = 0; i < callsOfAThread; ++i)
                call(thread);
        });
    }

    QString FileOf(int thread) const { return folder.Path(QStringLiteral("%1.mp4").arg(thread)); }

    void WriteFiles() const
    {
        for (int thread = 0; thread < threadCount; ++thread)
            folder.Write(QStringLiteral("%1.mp4").arg(thread));
    }

    Desktop desktop;
};

TEST_F(ExploreFileThreadsTest, SeveralThreadsShowFilesAtOnce)
{
    StartBrowser("answers");
    WriteFiles();
    std::atomic<int> shown = 0;

    CallFromEveryThread([&](int thread) { shown += ExploreFile(FileOf(thread).toStdString()); });

    EXPECT_EQ(shown, threadCount * callsOfAThread);
    const QByteArray requests = Requests();
    for (int thread = 0; thread < threadCount; ++thread)
        EXPECT_EQ(requests.count(RequestFor(PlainUri(FileOf(thread)))), callsOfAThread);
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileThreadsTest, SeveralThreadsFindNoBusAtOnce)
{
    WriteFiles();
    std::atomic<int> shown = 0;

    CallFromEveryThread([&](int thread) { shown += ExploreFile(FileOf(thread).toStdString()); });

    EXPECT_EQ(shown, 0);
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileThreadsTest, TheDesktopIsOnlyUsedOnTheGuiThread)
{
    WriteFiles();
    const std::string file = FileOf(0).toStdString();
    bool shown = true;

    std::thread([&] { shown = ExploreFile(file); }).join();

    EXPECT_FALSE(shown);
    EXPECT_TRUE(desktop.opened.isEmpty());
    EXPECT_TRUE(ExploreFile(file));
    EXPECT_EQ(desktop.opened, QList<QByteArray>{PlainUri(folder.Path())});
}

} // namespace

#include "Util/RevealFile.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/FakeBus.h"
#include "Tests/Support/SessionBusFixture.h"

#include <QElapsedTimer>
#include <QUrl>

#include <gmock/gmock.h>

#include <chrono>

#include <gio/gio.h>

using Tests::FakeBus;
using Tests::OpenDescriptors;
using Tests::slack;
using Tests::WaitUntil;
using Zendra::Util::RevealFile;

namespace {

constexpr std::chrono::milliseconds shortLimit{100};
/// The shortest possible wait: timers count whole milliseconds.
constexpr std::chrono::milliseconds nearlyShortLimit{90};
constexpr std::chrono::hours longLimit{1};

/// RevealFile() asks the browser, here with a time limit of the test's own.
class RevealFileTest : public Tests::SessionBusFixture
{
protected:
    /// The time that the call took.
    std::chrono::milliseconds TimeToReveal(std::chrono::milliseconds limit)
    {
        QElapsedTimer clock;
        clock.start();
        revealed = RevealFile(QUrl(QStringLiteral("file:///")), limit);
        return std::chrono::milliseconds(clock.elapsed());
    }

    void StartFakeBus(FakeBus::Behaviour behaviour)
    {
        fakeBus = std::make_unique<FakeBus>(working.Path("fake"), behaviour);
        environment.Set("DBUS_SESSION_BUS_ADDRESS", fakeBus->Address());
    }

    bool revealed = true;
    std::unique_ptr<FakeBus> fakeBus;
};

TEST_F(RevealFileTest, WaitsForTheLimitWhenTheBrowserNeverAnswers)
{
    StartBrowser("keeps-silent");

    const std::chrono::milliseconds waited = TimeToReveal(shortLimit);

    EXPECT_FALSE(revealed);
    EXPECT_GE(waited, nearlyShortLimit);
    EXPECT_LT(waited, slack);
}

TEST_F(RevealFileTest, WaitsForTheLimitWhenTheBusNeverAnswers)
{
    StartBrowser("answers");
    bus->Freeze();

    const std::chrono::milliseconds waited = TimeToReveal(shortLimit);

    EXPECT_FALSE(revealed);
    EXPECT_GE(waited, nearlyShortLimit);
    EXPECT_LT(waited, slack);
}

TEST_F(RevealFileTest, WaitsForTheLimitWhenTheBusStopsAnsweringAfterTheLogin)
{
    StartFakeBus(FakeBus::Behaviour::IgnoresHello);

    const std::chrono::milliseconds waited = TimeToReveal(shortLimit);

    EXPECT_FALSE(revealed);
    EXPECT_GE(waited, nearlyShortLimit);
    EXPECT_LT(waited, slack);
}

// The first connections fit into the queue of the system, later ones do not.
TEST_F(RevealFileTest, NeverWaitsLongerThanTheLimitForABusThatAcceptsNoConnection)
{
    StartFakeBus(FakeBus::Behaviour::AcceptsNoConnection);

    for (int call = 0; call < 5; ++call) {
        const std::chrono::milliseconds waited = TimeToReveal(shortLimit);

        EXPECT_FALSE(revealed) << call;
        EXPECT_LT(waited, slack) << call;
    }
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBrowserAnswers)
{
    StartBrowser("answers");

    const std::chrono::milliseconds waited = TimeToReveal(longLimit);

    EXPECT_TRUE(revealed);
    EXPECT_LT(waited, slack);
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBusDisconnects)
{
    StartFakeBus(FakeBus::Behaviour::HangsUpOnHello);

    const std::chrono::milliseconds waited = TimeToReveal(longLimit);

    EXPECT_FALSE(revealed);
    EXPECT_LT(waited, slack);
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBrowserDies)
{
    StartBrowser("dies");

    const std::chrono::milliseconds waited = TimeToReveal(longLimit);

    EXPECT_FALSE(revealed);
    EXPECT_LT(waited, slack);
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBusDies)
{
    StartBrowser("kills-the-bus");

    const std::chrono::milliseconds waited = TimeToReveal(longLimit);

    EXPECT_FALSE(revealed);
    EXPECT_LT(waited, slack);
    EXPECT_EQ(Requests(), RequestFor("file:///"));
}

TEST_F(RevealFileTest, KeepsNothingOpenAfterTheLimit)
{
    StartBrowser("keeps-silent");
    // GLib keeps descriptors open that all connections share.
    TimeToReveal(shortLimit);
    const int before = OpenDescriptors();

    for (int call = 0; call < 3; ++call)
        TimeToReveal(shortLimit);

    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= before; }))
        << OpenDescriptors() << " after " << before;
}

// Many times, since another thread notices the end of the connection, at another moment each time.
TEST_F(RevealFileTest, KeepsNothingOpenWhenTheBusDisconnects)
{
    const auto hangUp = [this] {
        fakeBus.reset();
        working.Remove("fake");
        StartFakeBus(FakeBus::Behaviour::HangsUpOnHello);
        TimeToReveal(longLimit);
    };
    StartFakeBus(FakeBus::Behaviour::HangsUpOnHello);
    TimeToReveal(longLimit);
    const int before = OpenDescriptors();

    for (int call = 0; call < 500; ++call)
        hangUp();

    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= before; }))
        << OpenDescriptors() << " after " << before;
}

TEST_F(RevealFileTest, KeepsNothingOpenWhenThereIsNoBus)
{
    TimeToReveal(longLimit);
    const int before = OpenDescriptors();

    TimeToReveal(longLimit);

    EXPECT_FALSE(revealed);
    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= before; }))
        << OpenDescriptors() << " after " << before;
}

TEST_F(RevealFileTest, DoesNotChangeTheThreadsMainContext)
{
    StartBrowser("answers");

    TimeToReveal(longLimit);

    EXPECT_TRUE(revealed);
    EXPECT_EQ(g_main_context_get_thread_default(), nullptr);
}

} // namespace

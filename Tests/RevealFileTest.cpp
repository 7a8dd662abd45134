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
/// The time that must have passed at least: timers are in whole milliseconds.
constexpr std::chrono::milliseconds nearlyShortLimit{90};
constexpr std::chrono::hours longLimit{1};

/// The part that asks the browser, with a limit of the test's own.
class RevealFileTest : public Tests::SessionBusFixture
{
protected:
    /// How long the caller was held.
    std::chrono::milliseconds TimeToReveal(std::chrono::milliseconds limit)
    {
        QElapsedTimer clock;
        clock.start();
        revealed = RevealFile(QUrl(QStringLiteral("file:///")), limit);
        return std::chrono::milliseconds(clock.elapsed());
    }

    void StartFakeBus(FakeBus::Behaviour behaviour)
    {
        fakeBus = std::make_unique<FakeBus>(working.Path(QStringLiteral("fake")), behaviour);
        environment.Set("DBUS_SESSION_BUS_ADDRESS", fakeBus->Address());
    }

    bool revealed = true;
    std::unique_ptr<FakeBus> fakeBus;
};

TEST_F(RevealFileTest, WaitsForTheLimitWhenTheBrowserNeverAnswers)
{
    StartBrowser("keeps-silent");

    const std::chrono::milliseconds held = TimeToReveal(shortLimit);

    EXPECT_FALSE(revealed);
    EXPECT_GE(held, nearlyShortLimit);
    EXPECT_LT(held, slack);
}

TEST_F(RevealFileTest, WaitsForTheLimitWhenTheBusNeverAnswers)
{
    StartBrowser("answers");
    bus->Freeze();

    const std::chrono::milliseconds held = TimeToReveal(shortLimit);

    EXPECT_FALSE(revealed);
    EXPECT_GE(held, nearlyShortLimit);
    EXPECT_LT(held, slack);
}

TEST_F(RevealFileTest, WaitsForTheLimitWhenTheBusLetsInAndThenIsSilent)
{
    StartFakeBus(FakeBus::Behaviour::IgnoresHello);

    const std::chrono::milliseconds held = TimeToReveal(shortLimit);

    EXPECT_FALSE(revealed);
    EXPECT_GE(held, nearlyShortLimit);
    EXPECT_LT(held, slack);
}

// The first connections fit into the system's queue, later ones do not.
TEST_F(RevealFileTest, NeverWaitsLongerThanTheLimitForABusThatAcceptsNobody)
{
    StartFakeBus(FakeBus::Behaviour::AcceptsNobody);

    for (int call = 0; call < 5; ++call) {
        const std::chrono::milliseconds held = TimeToReveal(shortLimit);

        EXPECT_FALSE(revealed) << call;
        EXPECT_LT(held, slack) << call;
    }
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBrowserAnswers)
{
    StartBrowser("answers");

    const std::chrono::milliseconds held = TimeToReveal(longLimit);

    EXPECT_TRUE(revealed);
    EXPECT_LT(held, slack);
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBusHangsUp)
{
    StartFakeBus(FakeBus::Behaviour::HangsUpOnHello);

    const std::chrono::milliseconds held = TimeToReveal(longLimit);

    EXPECT_FALSE(revealed);
    EXPECT_LT(held, slack);
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBrowserDies)
{
    StartBrowser("dies");

    const std::chrono::milliseconds held = TimeToReveal(longLimit);

    EXPECT_FALSE(revealed);
    EXPECT_LT(held, slack);
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBusDies)
{
    StartBrowser("kills-the-bus");

    const std::chrono::milliseconds held = TimeToReveal(longLimit);

    EXPECT_FALSE(revealed);
    EXPECT_LT(held, slack);
    EXPECT_EQ(Requests(), RequestFor("file:///"));
}

TEST_F(RevealFileTest, KeepsNothingOpenWhenTheLimitHasPassed)
{
    StartBrowser("keeps-silent");
    // GLib keeps what it needs for any connection.
    TimeToReveal(shortLimit);
    const int before = OpenDescriptors();

    for (int call = 0; call < 3; ++call)
        TimeToReveal(shortLimit);

    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= before; }))
        << OpenDescriptors() << " after " << before;
}

// Many times, since the connection learns of the end in another thread and at another moment each time.
TEST_F(RevealFileTest, KeepsNothingOpenWhenTheBusHangsUp)
{
    const auto hangUp = [this] {
        fakeBus.reset();
        working.Remove(QStringLiteral("fake"));
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

TEST_F(RevealFileTest, LeavesTheThreadItsOwnMainContext)
{
    StartBrowser("answers");

    TimeToReveal(longLimit);

    EXPECT_TRUE(revealed);
    EXPECT_EQ(g_main_context_get_thread_default(), nullptr);
}

} // namespace

#pragma once

#include "Core/ioPath.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/IFileManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

// For a test that links StandInCompanions: the functions of the companion libraries that FileManager calls
// are defined there, and do what the test's Companions say.

/// What the companion libraries do, and a log of the calls to them.
struct Companions
{
    /// Logs a call. @return `result`
    bool Call(const std::string& function, const Zendra::ioPath& path);

    std::vector<std::string> events;
    bool logsEvents = true;                   ///< false for a test without memory, which the log would need
    const Zendra::ioPath* lastPath = nullptr; ///< the object that the last call got
    bool result = true;                       ///< of every file operation
    std::function<void()> duringCall;         ///< runs inside every file operation

    Zendra::LW::InstanceRegistry* registry = nullptr;
    std::function<void(const std::string& key, void* instance)> onRegister;
    std::function<void(const std::string& key, void* instance)> onUnregister;
    std::function<void()> onInstance;
};

class StandInCompanionsFixture : public testing::Test
{
protected:
    StandInCompanionsFixture();
    ~StandInCompanionsFixture() override;

    Companions companions;
};

/// Logs its notifications with those calls.
class LoggingObserver : public Zendra::LW::IFileManagerObserver
{
public:
    LoggingObserver(Companions& log, std::string itsName) : companions(log), name(std::move(itsName)) {}

    void OnFileExplored(const Zendra::ioPath& path) override { Log("OnFileExplored", path); }
    void OnFileMovedToTrash(const Zendra::ioPath& path) override { Log("OnFileMovedToTrash", path); }
    void OnFileRemoved(const Zendra::ioPath& path) override { Log("OnFileRemoved", path); }

    const Zendra::ioPath* lastPath = nullptr; ///< the object that the last notification got
    std::function<void()> duringCall;         ///< runs inside every notification

private:
    void Log(const std::string& notification, const Zendra::ioPath& path);

    Companions& companions;
    const std::string name;
};

} // namespace Tests

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <iostream>
#include <memory>

#include <sys/stat.h>

namespace {

/// Gives the process a home of its own, so that no test reads or writes the user's.
void UseAsHome(const QDir& home)
{
    const QByteArray path = QFile::encodeName(home.absolutePath());
    qputenv("HOME", path);
    qputenv("XDG_DATA_HOME", path + "/data");
    qputenv("XDG_CONFIG_HOME", path + "/config");
    qputenv("XDG_CACHE_HOME", path + "/cache");
    qputenv("XDG_RUNTIME_DIR", path); // Qt requires that only its owner may enter it
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The user's umask must not forbid what the tests allow.
    ::umask(022);
    // A death test starts this program again. That process uses the home of the one that started it.
    constexpr const char* homeVariable = "LW_TESTS_HOME";
    std::unique_ptr<QTemporaryDir> home;
    if (!qEnvironmentVariableIsSet(homeVariable)) {
        home = std::make_unique<QTemporaryDir>();
        if (!home->isValid()) {
            std::cerr << "The tests need a temporary folder: " << qPrintable(home->errorString()) << '\n';
            return 1;
        }
        UseAsHome(QDir(home->path()));
        qputenv(homeVariable, QFile::encodeName(home->path()));
    }

    testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace {

/// Gives the process a home of its own, so that no test reads or writes the user's.
void LiveIn(const QDir& home)
{
    const QByteArray path = QFile::encodeName(home.absolutePath());
    qputenv("HOME", path);
    qputenv("XDG_DATA_HOME", path + "/data");
    qputenv("XDG_CONFIG_HOME", path + "/config");
    qputenv("XDG_CACHE_HOME", path + "/cache");
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir home;
    LiveIn(QDir(home.path()));

    testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

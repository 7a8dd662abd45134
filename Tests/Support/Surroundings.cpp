#include "Tests/Support/Surroundings.h"

#include "Tests/Support/TempFolder.h"

#include <QDir>
#include <QFile>
#include <QStorageInfo>

#include <fcntl.h>
#include <unistd.h>

namespace Tests {
namespace {

bool IsInMemory(const QString& path)
{
    return QStorageInfo(path).fileSystemType() == "tmpfs";
}

} // namespace

std::string WhyCaseIsIgnored()
{
    const TempFolder folder;
    folder.Write(QStringLiteral("a"));
    if (QFile::exists(folder.Path(QStringLiteral("A"))))
        return "this file system ignores case";
    return {};
}

std::string WhyOnlyUtf8IsAccepted()
{
    const TempFolder folder;
    const QByteArray path = QFile::encodeName(folder.Path()) + "/\xFF";
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT, 0600);
    if (file < 0)
        return "this file system accepts only UTF-8 names";
    ::close(file);
    ::unlink(path.constData());
    return {};
}

std::string WhyNoticesAreLate()
{
#ifdef __linux__
    return {};
#else
    return "this system delays and combines notices";
#endif
}

std::string WhyNothingIsTrashed()
{
#ifdef __APPLE__
    return "this system has one trash per user, which a test must not use";
#else
    if (IsInMemory(QDir::tempPath()))
        return "the temporary folder and /var/tmp are in memory, where there is no trash";
    return {};
#endif
}

bool PreferATemporaryFolderWithATrash()
{
    const QString disk = QStringLiteral("/var/tmp");
    return IsInMemory(QDir::tempPath()) && !IsInMemory(disk) && qputenv("TMPDIR", QFile::encodeName(disk));
}

} // namespace Tests

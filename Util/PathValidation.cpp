#include "Util/PathValidation.h"

#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>
#include <QString>

#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zendra::Util {
namespace {

enum class Verdict
{
    Valid,
    NothingGiven,
    Missing,
    NotAFolder,
    Unreadable,
    Unwritable,
    DiskFull
};

QString ReasonFor(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Valid:
        break;
    case Verdict::NothingGiven:
        return QCoreApplication::translate("PathValidation", "No folder is given");
    case Verdict::Missing:
        return QCoreApplication::translate("PathValidation", "The folder does not exist");
    case Verdict::NotAFolder:
        return QCoreApplication::translate("PathValidation", "This is not a folder");
    case Verdict::Unreadable:
        return QCoreApplication::translate("PathValidation", "The folder cannot be read");
    case Verdict::Unwritable:
        return QCoreApplication::translate("PathValidation", "The folder cannot be written to");
    case Verdict::DiskFull:
        return QCoreApplication::translate("PathValidation", "The disk is full");
    }
    return QString();
}

/// The system's name for the path. No slash at the end: "file/" would be missing instead of no folder.
QByteArray NativeName(const QString& path)
{
    QByteArray name = QFile::encodeName(path);
    while (name.size() > 1 && name.endsWith('/'))
        name.chop(1);
    return name;
}

Verdict VerdictOnOpening(const QByteArray& name, int error)
{
    switch (error) {
    case ENOENT:
    case ELOOP:
    case ENAMETOOLONG:
        return Verdict::Missing;
    case ENOTDIR: {
        // Either the last name is no folder, or one before it is none and the path leads nowhere.
        struct stat status = {};
        return ::stat(name.constData(), &status) == 0 ? Verdict::NotAFolder : Verdict::Missing;
    }
    default:
        return Verdict::Unreadable;
    }
}

Verdict VerdictOnWriting(int error)
{
    return error == ENOSPC || error == EDQUOT ? Verdict::DiskFull : Verdict::Unwritable;
}

/// Reading the first entry is enough: a folder that can be opened and not listed fails there.
Verdict TryToList(DIR* folder)
{
    errno = 0;
    if (!::readdir(folder) && errno != 0)
        return Verdict::Unreadable;
    return Verdict::Valid;
}

QByteArray HiddenName()
{
    return ".write-test-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
}

/// A byte, since a full disk still takes an empty file; closed, since some file systems complain only then.
Verdict TryToFill(int file)
{
    const bool written = ::write(file, "", 1) == 1;
    const int writeError = errno;
    const bool closed = ::close(file) == 0;
    if (!written)
        return VerdictOnWriting(writeError);
    return closed ? Verdict::Valid : VerdictOnWriting(errno);
}

Verdict TryToWrite(int folder)
{
    QByteArray name;
    int file = -1;
    // O_EXCL never opens what is there already, not even a link; a name taken by chance is not the folder's
    // fault.
    for (int attempt = 0; attempt < 8; ++attempt) {
        name = HiddenName();
        file = ::openat(folder, name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (file >= 0 || errno != EEXIST)
            break;
    }
    if (file < 0)
        return VerdictOnWriting(errno);

    // Closed before it is removed: network file systems keep an open file under another name.
    const Verdict verdict = TryToFill(file);
    const bool removed = ::unlinkat(folder, name.constData(), 0) == 0;
    return verdict == Verdict::Valid && !removed ? Verdict::Unwritable : verdict;
}

Verdict Judge(const QString& path)
{
    if (path.isEmpty())
        return Verdict::NothingGiven;
    // The system would stop reading there, and the verdict would be on another folder.
    if (path.contains(QChar::Null))
        return Verdict::Missing;

    const QByteArray name = NativeName(path);
    const int descriptor = ::open(name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return VerdictOnOpening(name, errno);
    DIR* folder = ::fdopendir(descriptor);
    if (!folder) {
        ::close(descriptor);
        return Verdict::Unreadable;
    }

    Verdict verdict = TryToList(folder);
    if (verdict == Verdict::Valid)
        verdict = TryToWrite(descriptor);
    ::closedir(folder);
    return verdict;
}

} // namespace

bool IsThisPathValid(const QString& path, QString* reason)
{
    const Verdict verdict = Judge(path);
    if (verdict != Verdict::Valid && reason)
        *reason = ReasonFor(verdict);
    return verdict == Verdict::Valid;
}

} // namespace Zendra::Util

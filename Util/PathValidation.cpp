#include "Util/PathValidation.h"

#include "Core/NullCharacter.h"

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

enum class FolderProblem
{
    None,
    NothingGiven,
    Missing,
    NotAFolder,
    Unreadable,
    Unwritable,
    DiskFull
};

QString ReasonFor(FolderProblem problem)
{
    switch (problem) {
    case FolderProblem::None:
        break;
    case FolderProblem::NothingGiven:
        return QCoreApplication::translate("PathValidation", "No folder is given");
    case FolderProblem::Missing:
        return QCoreApplication::translate("PathValidation", "The folder does not exist");
    case FolderProblem::NotAFolder:
        return QCoreApplication::translate("PathValidation", "This is not a folder");
    case FolderProblem::Unreadable:
        return QCoreApplication::translate("PathValidation", "The folder cannot be read");
    case FolderProblem::Unwritable:
        return QCoreApplication::translate("PathValidation", "The folder cannot be written to");
    case FolderProblem::DiskFull:
        return QCoreApplication::translate("PathValidation", "The disk is full");
    }
    return QString();
}

/// The system's name for the path. Without a trailing slash: with it, a file would be reported as missing and
/// not as no folder.
QByteArray NativeName(const QString& path)
{
    QByteArray name = QFile::encodeName(path);
    while (name.size() > 1 && name.endsWith('/'))
        name.chop(1);
    return name;
}

FolderProblem ProblemWithOpening(const QByteArray& name, int error)
{
    switch (error) {
    case ENOENT:
    case ELOOP:
    case ENAMETOOLONG:
        return FolderProblem::Missing;
    case ENOTDIR: {
        // Either the path names a file, or a name before the last one does and the path does not exist.
        struct stat status = {};
        return ::stat(name.constData(), &status) == 0 ? FolderProblem::NotAFolder : FolderProblem::Missing;
    }
    default:
        return FolderProblem::Unreadable;
    }
}

FolderProblem ProblemWithWriting(int error)
{
    return error == ENOSPC || error == EDQUOT ? FolderProblem::DiskFull : FolderProblem::Unwritable;
}

/// Reading the first entry is enough: a folder that can be opened but not listed fails there.
FolderProblem TryToList(DIR* folder)
{
    errno = 0;
    if (!::readdir(folder) && errno != 0)
        return FolderProblem::Unreadable;
    return FolderProblem::None;
}

QByteArray HiddenName()
{
    return ".write-test-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
}

/// Writes a byte, since an empty file can be created on a full disk; closes the file, since some file systems
/// report errors only then.
FolderProblem WriteByteAndClose(int file)
{
    const bool written = ::write(file, "", 1) == 1;
    const int writeError = errno;
    const bool closed = ::close(file) == 0;
    if (!written)
        return ProblemWithWriting(writeError);
    return closed ? FolderProblem::None : ProblemWithWriting(errno);
}

FolderProblem TryToWrite(int folder)
{
    QByteArray name;
    int file = -1;
    // O_EXCL never opens an existing file or link. If the random name is taken, another one is tried.
    for (int attempt = 0; attempt < 8; ++attempt) {
        name = HiddenName();
        file = ::openat(folder, name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (file >= 0 || errno != EEXIST)
            break;
    }
    if (file < 0)
        return ProblemWithWriting(errno);

    // Closed before it is removed: NFS renames an open file instead of removing it.
    const FolderProblem problem = WriteByteAndClose(file);
    const bool removed = ::unlinkat(folder, name.constData(), 0) == 0;
    return problem == FolderProblem::None && !removed ? FolderProblem::Unwritable : problem;
}

FolderProblem FindProblem(const QString& path)
{
    if (path.isEmpty())
        return FolderProblem::NothingGiven;
    if (HasNullCharacter(path))
        return FolderProblem::Missing;

    const QByteArray name = NativeName(path);
    const int descriptor = ::open(name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return ProblemWithOpening(name, errno);
    DIR* folder = ::fdopendir(descriptor);
    if (!folder) {
        ::close(descriptor);
        return FolderProblem::Unreadable;
    }

    FolderProblem problem = TryToList(folder);
    if (problem == FolderProblem::None)
        problem = TryToWrite(descriptor);
    ::closedir(folder);
    return problem;
}

} // namespace

bool IsThisPathValid(const QString& path, QString* reason)
{
    const FolderProblem problem = FindProblem(path);
    if (problem != FolderProblem::None && reason)
        *reason = ReasonFor(problem);
    return problem == FolderProblem::None;
}

} // namespace Zendra::Util

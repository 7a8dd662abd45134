#include "Util/ExploreFile.h"

#include "Core/NullCharacter.h"
#include "Util/RevealFile.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QThread>
#include <QUrl>

#include <boost/filesystem/operations.hpp>

#include <algorithm>

#include <sys/stat.h>

namespace fs = boost::filesystem;

namespace Zendra::Util {
namespace {

/// An absolute path of the entry without ".", ".." and double slashes. File browsers remove ".." textually,
/// which gives another entry after a link. Links in the rest of the path are kept. Empty when the path does
/// not exist.
QByteArray PlainAbsolutePath(const std::string& path)
{
    boost::system::error_code error;
    std::string absolute = path;
    if (path.front() != '/')
        absolute = fs::current_path(error).native() + '/' + path;

    QByteArray plain;
    for (const QByteArray& name : QByteArray::fromStdString(absolute).split('/')) {
        if (name == "..") {
            plain = QByteArray::fromStdString(fs::canonical(plain.toStdString() + "/..", error).native());
            if (plain == "/")
                plain.clear();
        } else if (!name.isEmpty() && name != ".") {
            plain += '/' + name;
        }
        if (error)
            return QByteArray();
    }
    return plain.isEmpty() ? QByteArrayLiteral("/") : plain;
}

/// Intended: not ioPath::exists(), since a dangling link can be shown.
bool Exists(const QByteArray& path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0;
}

/// From bytes, since a name need not be text; QUrl::fromLocalFile() takes text only.
QUrl FileUrl(const QByteArray& path)
{
    return QUrl::fromEncoded("file://" + path.toPercentEncoding("/!$&'()*+,;=:@"));
}

QByteArray ContainingFolder(const QByteArray& path)
{
    return path.left(std::max(QByteArray::size_type(1), path.lastIndexOf('/')));
}

bool IsGuiThread()
{
    const QCoreApplication* const application = QCoreApplication::instance();
    return application && application->thread() == QThread::currentThread();
}

} // namespace

bool ExploreFile(const ioPath& path)
{
    const std::string given = path.string();
    if (given.empty() || HasNullCharacter(given))
        return false;
    const QByteArray entry = PlainAbsolutePath(given);
    if (!Exists(entry))
        return false;

    if (RevealFile(FileUrl(entry), exploreFileLimit))
        return true;
    // QDesktopServices belongs to the GUI thread.
    return IsGuiThread() && QDesktopServices::openUrl(FileUrl(ContainingFolder(entry)));
}

} // namespace Zendra::Util

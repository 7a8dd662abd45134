#include "Examples/RecordingsFolder/LinkFinder.h"

#include "Lib/Util/FS/TemporaryHardLink.h"

#include <QDir>
#include <QFileInfo>

namespace RecordingsFolder {

QStringList LinksTo(const QString& path)
{
    QStringList links;
    // System: a link that leads nowhere is listed only with it.
    const QFileInfoList entries =
        QDir(QDir::tempPath()).entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo& entry : entries) {
        if (entry.isSymLink() && entry.symLinkTarget() == path)
            links.append(entry.absoluteFilePath());
    }
    return links;
}

QString MakeTemporaryLink(const QString& path)
{
    const QStringList before = LinksTo(path);
    const Zendra::LW::TemporaryHardLink holder(path.toStdString());
    const QStringList after = LinksTo(path);

    for (const QString& link : after) {
        if (!before.contains(link))
            return link;
    }
    return {};
}

} // namespace RecordingsFolder

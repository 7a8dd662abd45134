#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>

#include <string>
#include <vector>

namespace Tests {

using Texts = std::vector<std::string>;

/// The paths of files; of those below a folder only what follows it.
inline Texts PathsOf(const QList<QFileInfo>& files, const QString& below = QString())
{
    Texts paths;
    for (const QFileInfo& info : files) {
        const QString path = info.filePath();
        const bool isBelow = !below.isEmpty() && path.startsWith(below + QLatin1Char('/'));
        paths.push_back((isBelow ? path.mid(below.size() + 1) : path).toStdString());
    }
    return paths;
}

inline Texts NamesOf(const QList<QFileInfo>& files)
{
    Texts names;
    for (const QFileInfo& info : files)
        names.push_back(info.fileName().toStdString());
    return names;
}

} // namespace Tests

#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace Tests {

using Texts = std::vector<std::string>;

inline Texts ToTexts(const QStringList& strings)
{
    Texts texts;
    for (const QString& string : strings)
        texts.push_back(string.toStdString());
    return texts;
}

inline QStringList ToQStringList(const Texts& texts)
{
    QStringList strings;
    for (const std::string& text : texts)
        strings.append(QString::fromStdString(text));
    return strings;
}

/// The paths of files, without this folder's own path where a file is below it.
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

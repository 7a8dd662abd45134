#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <initializer_list>
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

/// Name filters from literals: NameFilters{"*.mp4", "*.mov"}.
class NameFilters
{
public:
    NameFilters() = default;
    NameFilters(std::initializer_list<const char*> patterns)
    {
        for (const char* pattern : patterns)
            list.append(QString::fromUtf8(pattern));
    }
    NameFilters(const QStringList& patterns) : list(patterns) {}

    operator const QStringList&() const { return list; }

private:
    QStringList list;
};

/// A path relative to the root above it; unchanged when it is not below the root.
inline std::string RelativePath(const QString& path, const QString& root)
{
    const bool isBelow = !root.isEmpty() && path.startsWith(root + QLatin1Char('/'));
    return (isBelow ? path.mid(root.size() + 1) : path).toStdString();
}

/// The paths of files, relative to the root where they are below it.
inline Texts PathsOf(const QList<QFileInfo>& files, const QString& root = QString())
{
    Texts paths;
    for (const QFileInfo& info : files)
        paths.push_back(RelativePath(info.filePath(), root));
    return paths;
}

inline bool AreSortedByName(const QList<QFileInfo>& files)
{
    return std::is_sorted(files.begin(), files.end(),
                          [](const QFileInfo& a, const QFileInfo& b) { return a.fileName() < b.fileName(); });
}

inline Texts NamesOf(const QList<QFileInfo>& files)
{
    Texts names;
    for (const QFileInfo& info : files)
        names.push_back(info.fileName().toStdString());
    return names;
}

} // namespace Tests

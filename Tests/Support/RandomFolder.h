#pragma once

#include "Tests/Support/Require.h"
#include "Tests/Support/TempFolder.h"

#include <QDir>
#include <QFile>

#include <random>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace Tests {

/// A folder with random entries of every kind, the same for the same seed.
class RandomFolder
{
public:
    RandomFolder(unsigned int seed, bool withCycles) : random(seed), cycles(withCycles)
    {
        Fill(folder.Path(), 0);
    }

    QString Path() const { return folder.Path(); }

private:
    static std::string Native(const QString& path) { return QFile::encodeName(path).toStdString(); }

    template <typename Number>
    Number Next(Number count)
    {
        return static_cast<Number>(random() % static_cast<unsigned int>(count));
    }

    QString NextName()
    {
        static const QStringList stems{
            QStringLiteral("a"),       QStringLiteral("A"),      QStringLiteral("b"),
            QStringLiteral("clip 1"),  QStringLiteral("Clip"),   QStringLiteral("\u00e4"),
            QStringLiteral("10"),      QStringLiteral("9"),      QStringLiteral("\U0001F600"),
            QStringLiteral("\uff5e"),  QStringLiteral("x\ny"),   QStringLiteral("a.b.c"),
            QStringLiteral("[a-b]*?"), QStringLiteral(".hidden")};
        static const QStringList endings{QString(), QStringLiteral(".mp4"), QStringLiteral(".MP4"),
                                         QStringLiteral(".txt"), QStringLiteral(".")};
        return stems.at(Next(stems.size())) + endings.at(Next(endings.size()));
    }

    void Fill(const QString& path, int level)
    {
        const QDir dir(path);
        for (int count = Next(level == 0 ? 14 : 9); count > 0; --count) {
            const QString entry = dir.filePath(NextName());
            const std::string name = Native(entry);
            struct ::stat status;
            if (::lstat(name.c_str(), &status) == 0)
                continue;
            switch (Next(10)) {
            case 0:
            case 1:
            case 2:
                if (level < 4 && dir.mkdir(entry)) {
                    Fill(entry, level + 1);
                    folders.append(entry);
                }
                break;
            case 3:
                Link(QStringLiteral("missing"), entry);
                break;
            case 4:
                Require(::mkfifo(name.c_str(), 0600) == 0, "make " + name);
                break;
            case 5:
                if (!files.isEmpty())
                    Link(files.at(Next(files.size())), entry);
                break;
            case 6:
                if (cycles && Next(2) == 0)
                    Link(path, entry);
                else if (!folders.isEmpty())
                    Link(folders.at(Next(folders.size())), entry);
                break;
            default: {
                QFile file(entry);
                Require(file.open(QIODevice::WriteOnly), "open " + name);
                files.append(entry);
            }
            }
        }
    }

    static void Link(const QString& target, const QString& path)
    {
        Require(::symlink(Native(target).c_str(), Native(path).c_str()) == 0, "link " + Native(path));
    }

    std::mt19937 random;
    const bool cycles;
    TempFolder folder;
    QStringList files;
    QStringList folders;
};

} // namespace Tests

#pragma once

#include <QDir>

#include <stdexcept>

namespace Tests {

/// Makes a folder the process's current one while it lives.
class CurrentFolder
{
public:
    explicit CurrentFolder(const QString& path) : before(QDir::currentPath())
    {
        if (!QDir::setCurrent(path))
            throw std::runtime_error("cannot go to " + path.toStdString());
    }
    ~CurrentFolder() { QDir::setCurrent(before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    QString before;
};

} // namespace Tests

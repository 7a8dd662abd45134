#pragma once

#include "Tests/Support/PathText.h"

#include <QDir>

#include <stdexcept>

namespace Tests {

/// Makes a folder the process's current one while it lives.
class CurrentFolder
{
public:
    explicit CurrentFolder(const PathText& path) : before(QDir::currentPath())
    {
        const QString& text = path;
        if (!QDir::setCurrent(text))
            throw std::runtime_error("cannot go to " + text.toStdString());
    }
    ~CurrentFolder() { QDir::setCurrent(before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    QString before;
};

} // namespace Tests

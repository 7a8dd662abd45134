#pragma once

#include <QString>
#include <QTemporaryDir>

namespace Tests {

/// A new folder for FolderOperations, gone when the object is.
class Playground
{
public:
    Playground();

    QString Path() const { return path; }

private:
    QTemporaryDir holder;
    QString path;
};

} // namespace Tests

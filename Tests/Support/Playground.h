#pragma once

#include "Tests/Support/TempFolder.h"

#include <QString>

namespace Tests {

/// A new folder for FolderOperations, deleted with the object.
class Playground
{
public:
    Playground();

    QString Path() const { return path; }

private:
    TempFolder folder;
    QString path;
};

} // namespace Tests

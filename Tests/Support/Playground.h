#pragma once

#include "Tests/Support/TempFolder.h"

#include <QString>

namespace Tests {

/// A new folder for FolderOperations, gone when the object is.
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

#include "Tests/Support/Playground.h"

#include <QDir>
#include <QFileInfo>

#include <stdexcept>

namespace Tests {

Playground::Playground()
{
    // Some levels down: relative links that were moved then still lead to somewhere inside the temporary
    // folder.
    const QString levels = QStringLiteral("1/2/3/4/5/playground");
    if (!holder.isValid() || !QDir(holder.path()).mkpath(levels))
        throw std::runtime_error("cannot make a playground in " + holder.path().toStdString());
    path = QFileInfo(holder.filePath(levels)).canonicalFilePath();
}

} // namespace Tests

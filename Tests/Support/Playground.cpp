#include "Tests/Support/Playground.h"

namespace Tests {

Playground::Playground()
{
    // Some levels down: a relative link that was moved still leads into the temporary folder.
    const QString levels = QStringLiteral("1/2/3/4/5/playground");
    folder.MakeFolder(levels);
    path = folder.Path(levels);
}

} // namespace Tests

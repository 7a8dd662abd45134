#pragma once

#include "Lib/Util/FS/KnownPaths.h"

#include <QString>

#include <initializer_list>

namespace Tests {

inline Zendra::LW::KnownPaths MakeKnownPaths(std::initializer_list<QString> paths)
{
    Zendra::LW::KnownPaths known;
    for (const QString& path : paths)
        known.Insert(path);
    return known;
}

} // namespace Tests

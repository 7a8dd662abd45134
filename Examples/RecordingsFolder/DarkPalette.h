#pragma once

#include <QPalette>

namespace RecordingsFolder {

/// Light text on dark ground, for those who prefer it and to see that the window can be read that way.
QPalette DarkPalette();

} // namespace RecordingsFolder

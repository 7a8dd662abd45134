#pragma once

class QCoreApplication;

namespace RecordingsFolder {

/// Shows texts in the user's language where there is a catalogue of it: the example's own, which has the
/// texts of the libraries, too, and Qt's. In English where there is none.
///
/// Before the first text is asked for.
void InstallTranslations(QCoreApplication& application);

} // namespace RecordingsFolder

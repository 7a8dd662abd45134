#pragma once

class QCoreApplication;

namespace RecordingsFolder {

/// Loads the catalogues of the user's language: Qt's, and the example's own, which also has the libraries'
/// texts. Without a catalogue the texts are in English.
///
/// Call it before the first text is translated.
void InstallTranslations(QCoreApplication& application);

} // namespace RecordingsFolder

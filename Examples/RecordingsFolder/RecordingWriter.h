#pragma once

#include "Core/ioPath.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <functional>
#include <regex>
#include <string>

namespace RecordingsFolder {

/// Writes new recordings with ascending numbers: "Recording 1.png", "Recording 2.png".
class RecordingWriter
{
    Q_DECLARE_TR_FUNCTIONS(RecordingsFolder::RecordingWriter)

public:
    /// Finds the next free number, as Zendra::LW::GetNextAvaliableIndex does.
    using AskNumber = std::function<std::string(const Zendra::ioPath& folder, const std::regex& pattern)>;

    struct Result
    {
        QString path;  ///< the new file; empty when there is none
        QString error; ///< for the user: why there is no new file
    };

    /// Takes the numbers from the library.
    RecordingWriter();
    explicit RecordingWriter(AskNumber ask);

    /// Writes a new file with this content. Never overwrites an existing file.
    Result Write(const QString& folder, const QByteArray& content) const;

    /// How many numbers are tried while other programs keep taking them.
    static constexpr int attempts = 100;

private:
    AskNumber askNumber;
};

} // namespace RecordingsFolder

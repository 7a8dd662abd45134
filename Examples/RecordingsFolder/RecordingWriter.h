#pragma once

#include "Core/ioPath.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <functional>
#include <regex>
#include <string>

namespace RecordingsFolder {

/// Writes new recordings, numbered one after the other: "Recording 1.png", "Recording 2.png".
class RecordingWriter
{
    Q_DECLARE_TR_FUNCTIONS(RecordingsFolder::RecordingWriter)

public:
    /// Finds the next free number, as Zendra::LW::GetNextAvaliableIndex does.
    using AskNumber = std::function<std::string(const Zendra::ioPath& folder, const std::regex& pattern)>;

    struct Result
    {
        QString path;  ///< the new file; empty when there is none
        QString error; ///< why there is none, for the user
    };

    /// Asks the library for the numbers.
    RecordingWriter();
    explicit RecordingWriter(AskNumber ask);

    /// Writes a new file with this content; never writes over a file that is there already.
    Result Write(const QString& folder, const QByteArray& content) const;

    /// How often a number is asked for when others keep taking it.
    static constexpr int attempts = 100;

private:
    AskNumber askNumber;
};

} // namespace RecordingsFolder

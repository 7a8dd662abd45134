#include "Examples/RecordingsFolder/RecordingWriter.h"

#include "Lib/Util/FS/DirectoryUtils.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <exception>

namespace RecordingsFolder {

namespace {

/// Only numbers without leading zeros, which would be read as octal. This program writes none, so a
/// "Recording 08.png" comes from another program, and must not make this one fail.
const std::regex& NamePattern()
{
    static const std::regex pattern(R"(Recording ([1-9]\d*)\.png)");
    return pattern;
}

QString FileName(const std::string& number)
{
    return QStringLiteral("Recording %1.png").arg(QString::fromStdString(number));
}

/// Also true for a dangling link, which occupies its name, too.
bool IsTaken(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

} // namespace

RecordingWriter::RecordingWriter() : RecordingWriter(&Zendra::LW::GetNextAvaliableIndex)
{
}

RecordingWriter::RecordingWriter(AskNumber ask) : askNumber(std::move(ask))
{
}

RecordingWriter::Result RecordingWriter::Write(const QString& folder, const QByteArray& content) const
{
    const QDir dir(folder);
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::string number;
        try {
            number = askNumber(dir.absolutePath().toStdString(), NamePattern());
        } catch (const std::exception& problem) {
            return {{},
                    tr("The number of the next recording could not be determined: %1")
                        .arg(QString::fromLocal8Bit(problem.what()))};
        }

        QFile file(dir.absoluteFilePath(FileName(number)));
        // Nothing reserves the number: another program may have taken it meanwhile.
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            if (IsTaken(file.fileName()))
                continue;
            return {{}, tr("%1 could not be created: %2").arg(file.fileName(), file.errorString())};
        }
        if (file.write(content) != content.size() || !file.flush()) {
            const QString reason = file.errorString();
            file.remove();
            return {{}, tr("%1 could not be written: %2").arg(file.fileName(), reason)};
        }
        return {file.fileName(), {}};
    }
    return {{}, tr("Other programs have taken every number that was tried.")};
}

} // namespace RecordingsFolder

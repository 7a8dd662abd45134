#pragma once

#include <QPlainTextEdit>

namespace RecordingsFolder {

/// Shows what happened, one line each with the time of day, the newest at the bottom.
class LogPane : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit LogPane(QWidget* parent = nullptr);

    /// Adds a line; only the last thousand are kept.
    void Write(const QString& line);
};

} // namespace RecordingsFolder

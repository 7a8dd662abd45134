#pragma once

#include <QPlainTextEdit>

namespace RecordingsFolder {

/// A log, one line an event with the time of day, the newest at the bottom.
class LogPane : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit LogPane(QWidget* parent = nullptr);

    /// Adds a line; only the last thousand are kept.
    void Write(const QString& line);
};

} // namespace RecordingsFolder

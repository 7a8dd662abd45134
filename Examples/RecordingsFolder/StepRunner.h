#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <functional>

namespace RecordingsFolder {

/// Runs one step after the other and prints a line for each.
///
/// A step does something and names the signals that have to come of it; they are printed with the
/// milliseconds until each arrived. After a step that failed the others are passed over.
class StepRunner : public QObject
{
    Q_OBJECT

public:
    /// A signal, and the file it is about where it is about one.
    struct Happening
    {
        QString name;
        QString file;
    };
    using Act = std::function<QVector<Happening>()>;

    explicit StepRunner(int limitMilliseconds);

    /// Something happened that a step may be waiting for.
    void Record(const QString& name, const QString& file);

    /// Runs a step: calls act, then handles events until what it returned has happened, in this order.
    /// @param title  what the step is, for the user
    void Step(const QString& title, const Act& act);

    // For use inside of a step:

    /// The step fails.
    void Fail(const QString& reason);
    /// Adds something to the step's line.
    void Note(const QString& text) { notes.append(text); }
    /// A message has to come up; it is answered and noted. One that is not expected fails the step.
    void ExpectMessage() { messageExpected = true; }
    /// Handles events until the condition holds.
    /// @return whether it does; false when the step's time is over, or it has failed
    bool WaitUntil(const std::function<bool()>& condition);

    bool HasFailed() const { return failed; }

private:
    struct Recorded
    {
        Happening happening;
        qint64 when; ///< by the clock
    };

    void WaitFor(const Happening& awaited);
    bool Find(const Happening& awaited);
    void AnswerMessage();

    const int limit;
    QElapsedTimer clock;
    QTimer messages; ///< looks for messages, which run an event loop of their own; also ends waits in time

    QVector<Recorded> recorded;
    int next = 0; ///< the first one recorded that no step has waited for

    int number = 0;
    qint64 began = 0; ///< the running step, by the clock
    QString title;
    QStringList notes;
    bool messageExpected = false;
    bool messageSeen = false;
    bool failed = false;
};

} // namespace RecordingsFolder

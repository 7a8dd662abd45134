#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <functional>

namespace RecordingsTour {

/// Runs steps and prints a line for each.
///
/// A step does something and returns the signals that it has to cause. They are printed with the milliseconds
/// until each was emitted. After a step has failed, the others are skipped.
class StepRunner : public QObject
{
    Q_OBJECT

public:
    /// A signal, and its file if it has one.
    struct Event
    {
        QString name;
        QString file;
    };
    using Action = std::function<QVector<Event>()>;

    explicit StepRunner(int limitMilliseconds);

    /// Call it for every signal that a step may wait for.
    void Record(const QString& name, const QString& file);

    /// Calls the action, then runs the event loop until the signals that it returned have been emitted, in
    /// this order.
    /// @param title  what the step does, for the user
    void Step(const QString& title, const Action& action);

    // For use in an action:

    /// Makes the step fail.
    void Fail(const QString& reason);
    /// Adds text to the step's line.
    void Note(const QString& text) { notes.append(text); }
    /// The step has to show a message, which is answered and noted. Without this call, a message makes the
    /// step fail.
    void ExpectMessage() { messageExpected = true; }
    /// Runs the event loop until the condition holds.
    /// @return false if the step has failed, or its time is up
    bool WaitUntil(const std::function<bool()>& condition);

    bool HasFailed() const { return failed; }

private:
    struct Recorded
    {
        Event event;
        qint64 time; ///< by the clock
    };

    void WaitFor(const Event& expected);
    bool Find(const Event& expected);
    void AnswerMessage();

    const int limit;
    QElapsedTimer clock;
    QTimer messages; ///< checks for messages; also wakes WaitUntil(), so that it notices when the time is up

    QVector<Recorded> recorded;
    int next = 0; ///< the first recorded event that no step has waited for

    int number = 0;
    qint64 stepStart = 0; ///< by the clock
    QString title;
    QStringList notes;
    bool messageExpected = false;
    bool messageSeen = false;
    bool failed = false;
};

} // namespace RecordingsTour

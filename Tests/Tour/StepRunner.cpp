#include "Tests/Tour/StepRunner.h"

#include "Examples/RecordingsFolder/WatchEvent.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTextStream>

namespace RecordingsTour {

using RecordingsFolder::Quoted;

namespace {

void Print(const QString& line)
{
    QTextStream out(stdout);
    out << line << '\n';
}

QString Describe(const StepRunner::Event& event)
{
    return event.file.isEmpty() ? event.name : event.name + QLatin1Char(' ') + Quoted(event.file);
}

} // namespace

StepRunner::StepRunner(int limitMilliseconds) : limit(limitMilliseconds)
{
    clock.start();
    connect(&messages, &QTimer::timeout, this, &StepRunner::AnswerMessage);
    messages.start(20);
}

void StepRunner::Record(const QString& name, const QString& file)
{
    recorded.append({{name, file}, clock.elapsed()});
}

void StepRunner::Step(const QString& newTitle, const Action& action)
{
    if (failed)
        return;
    ++number;
    title = newTitle;
    notes.clear();
    messageExpected = false;
    messageSeen = false;
    stepStart = clock.elapsed();

    const QVector<Event> expected = action();
    for (const Event& event : expected)
        WaitFor(event);
    if (messageExpected && !messageSeen)
        Fail(QStringLiteral("no message was shown"));
    if (!failed)
        Print(QStringLiteral("%1  %2  %3")
                  .arg(number, 2)
                  .arg(title, -50)
                  .arg(notes.join(QStringLiteral(", "))));
}

void StepRunner::Fail(const QString& reason)
{
    if (failed)
        return;
    failed = true;
    Print(QStringLiteral("FAILED in step %1 (%2): %3").arg(QString::number(number), title, reason));
}

bool StepRunner::WaitUntil(const std::function<bool()>& condition)
{
    bool holds = condition();
    while (!holds && !failed && clock.elapsed() - stepStart < limit) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        holds = condition();
    }
    return holds && !failed;
}

void StepRunner::WaitFor(const Event& expected)
{
    if (!WaitUntil([&] { return Find(expected); }))
        Fail(QStringLiteral("%1 was not emitted within %2 ms").arg(Describe(expected)).arg(limit));
}

bool StepRunner::Find(const Event& expected)
{
    for (int i = next; i < recorded.size(); ++i) {
        const Recorded& candidate = recorded[i];
        if (candidate.event.name != expected.name || candidate.event.file != expected.file)
            continue;
        next = i + 1;
        // The event may have come before this step started.
        Note(QStringLiteral("%1 after %2 ms")
                 .arg(Describe(expected))
                 .arg(qMax(qint64(0), candidate.time - stepStart)));
        return true;
    }
    return false;
}

void StepRunner::AnswerMessage()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box)
        return;
    if (messageExpected) {
        messageSeen = true;
        Note(Quoted(box->text()));
    } else {
        Fail(QStringLiteral("a message was shown: %1").arg(box->text()));
    }
    for (const auto answer : {QMessageBox::Yes, QMessageBox::Close, QMessageBox::Ok}) {
        if (QAbstractButton* button = box->button(answer)) {
            button->click();
            return;
        }
    }
    box->reject();
}

} // namespace RecordingsTour

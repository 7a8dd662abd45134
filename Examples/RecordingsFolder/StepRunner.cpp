#include "Examples/RecordingsFolder/StepRunner.h"

#include "Examples/RecordingsFolder/WatchEvent.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTextStream>

namespace RecordingsFolder {

namespace {

void Print(const QString& line)
{
    QTextStream out(stdout);
    out << line << '\n';
}

QString Describe(const StepRunner::Happening& happening)
{
    return happening.file.isEmpty() ? happening.name
                                    : happening.name + QLatin1Char(' ') + Quoted(happening.file);
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

void StepRunner::Step(const QString& newTitle, const Act& act)
{
    if (failed)
        return;
    ++number;
    title = newTitle;
    notes.clear();
    messageExpected = false;
    messageSeen = false;
    began = clock.elapsed();

    const QVector<Happening> awaited = act();
    for (const Happening& happening : awaited)
        WaitFor(happening);
    if (messageExpected && !messageSeen)
        Fail(tr("no message came up"));
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
    Print(tr("FAILED in step %1, %2: %3").arg(QString::number(number), title, reason));
}

bool StepRunner::WaitUntil(const std::function<bool()>& condition)
{
    bool holds = condition();
    while (!holds && !failed && clock.elapsed() - began < limit) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        holds = condition();
    }
    return holds && !failed;
}

void StepRunner::WaitFor(const Happening& awaited)
{
    if (!WaitUntil([&] { return Find(awaited); }))
        Fail(tr("%1 did not come within %2 ms").arg(Describe(awaited)).arg(limit));
}

bool StepRunner::Find(const Happening& awaited)
{
    for (int i = next; i < recorded.size(); ++i) {
        const Recorded& candidate = recorded[i];
        if (candidate.happening.name != awaited.name || candidate.happening.file != awaited.file)
            continue;
        next = i + 1;
        // What a step waits for may have come while the step before it was still at work.
        Note(tr("%1 after %2 ms").arg(Describe(awaited)).arg(qMax(qint64(0), candidate.when - began)));
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
        Fail(tr("a message came up: %1").arg(box->text()));
    }
    for (const auto answer : {QMessageBox::Yes, QMessageBox::Close, QMessageBox::Ok}) {
        if (QAbstractButton* button = box->button(answer)) {
            button->click();
            return;
        }
    }
    box->reject();
}

} // namespace RecordingsFolder

// A file browser that shows nothing: serves org.freedesktop.FileManager1 on the session bus, writes down what
// it is asked, and answers, refuses or keeps silent.
//
//     FileManagerStandIn answers|refuses|keeps-silent RECORD
//
// Each request is one line in the file RECORD. "ready" on the standard output says that the service can be
// found.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QFile>
#include <QObject>
#include <QStringList>

#include <cstdio>

namespace {

class StandIn : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    StandIn(const QString& behaviour, const QString& recordName) : way(behaviour), record(recordName) {}

    // Serves the object and then the name, so that whoever finds the name finds the object. A browser that
    // the bus has started goes with the bus.
    bool Serve()
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                    QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                    QCoreApplication::instance(), SLOT(quit()));
        return record.open(QIODevice::WriteOnly | QIODevice::Append)
               && bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), this,
                                     QDBusConnection::ExportAllSlots)
               && bus.registerService(QStringLiteral("org.freedesktop.FileManager1"));
    }

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString& startupId)
    {
        record.write("ShowItems [" + uris.join(QLatin1Char(' ')).toUtf8() + "] [" + startupId.toUtf8()
                     + "]\n");
        record.flush();
        if (way == QLatin1String("refuses"))
            sendErrorReply(QDBusError::Failed, QStringLiteral("not today"));
        else if (way == QLatin1String("keeps-silent"))
            setDelayedReply(true);
    }

private:
    const QString way;
    QFile record;
};

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        return 2;

    StandIn standIn(arguments[1], arguments[2]);
    if (!standIn.Serve())
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

#include "FileManagerStandIn.moc"

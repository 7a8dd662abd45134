#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <ctime>

namespace Tests {

/// Makes a time zone the process's own while it lives: a text as TZ takes it, such as "CET-1".
class TimeZone
{
public:
    explicit TimeZone(const QByteArray& zone) : wasSet(qEnvironmentVariableIsSet("TZ")), before(qgetenv("TZ"))
    {
        qputenv("TZ", zone);
        ::tzset();
    }
    ~TimeZone()
    {
        if (wasSet)
            qputenv("TZ", before);
        else
            qunsetenv("TZ");
        ::tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    bool wasSet;
    QByteArray before;
};

} // namespace Tests

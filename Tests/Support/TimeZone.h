#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <ctime>

namespace Tests {

/// Sets the process's time zone while it lives: a text as TZ takes it, such as "CET-1"; a null text is the
/// machine's zone.
class TimeZone
{
public:
    explicit TimeZone(const QByteArray& zone) : wasSet(qEnvironmentVariableIsSet("TZ")), before(qgetenv("TZ"))
    {
        Set(!zone.isNull(), zone);
    }
    ~TimeZone() { Set(wasSet, before); }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    static void Set(bool isSet, const QByteArray& zone)
    {
        if (isSet)
            qputenv("TZ", zone);
        else
            qunsetenv("TZ");
        ::tzset();
    }

    bool wasSet;
    QByteArray before;
};

} // namespace Tests

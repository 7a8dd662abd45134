#pragma once

#include <QByteArray>

#include <map>
#include <string>

namespace Tests {

/// Sets environment variables, and restores them when it is destroyed.
class Environment
{
public:
    Environment() = default;
    ~Environment()
    {
        for (const auto& [name, value] : before)
            Put(name, value);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /// A null value removes the variable.
    void Set(const char* name, const QByteArray& value)
    {
        before.emplace(name, qEnvironmentVariableIsSet(name) ? qgetenv(name).append("") : QByteArray());
        Put(name, value);
    }

private:
    static void Put(const std::string& name, const QByteArray& value)
    {
        if (value.isNull())
            qunsetenv(name.c_str());
        else
            qputenv(name.c_str(), value);
    }

    std::map<std::string, QByteArray> before;
};

} // namespace Tests

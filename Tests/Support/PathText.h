#pragma once

#include <QString>

#include <string>

namespace Tests {

/// A path for the helpers of the tests: a literal or a std::string, both in UTF-8, or a text of Qt's.
class PathText
{
public:
    PathText(const char* utf8) : text(QString::fromUtf8(utf8)) {}
    PathText(const std::string& utf8) : text(QString::fromStdString(utf8)) {}
    PathText(const QString& path) : text(path) {}
    PathText(QLatin1String path) : text(path) {}

    operator const QString&() const { return text; }

private:
    QString text;
};

} // namespace Tests

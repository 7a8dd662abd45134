#pragma once

#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"
#include "Util/PathValidation.h"

#include <QCoreApplication>
#include <QFile>
#include <QTranslator>

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

#include <unistd.h>

namespace Tests {

/// A language in which every text of the validation stands in brackets.
class Brackets : public QTranslator
{
public:
    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (qstrcmp(context, "PathValidation") != 0)
            return QString();
        return QLatin1Char('[') + QString::fromLatin1(text) + QLatin1Char(']');
    }
};

/// What the validation said: the verdict and, for a refusal, the reason.
struct Said
{
    bool valid;
    QString reason;
};

inline bool operator==(const Said& left, const Said& right)
{
    return left.valid == right.valid && left.reason == right.reason;
}

inline std::ostream& operator<<(std::ostream& stream, const Said& said)
{
    return stream << (said.valid ? "valid, " : "invalid, ") << '"' << said.reason.toStdString() << '"';
}

inline const QString untouched = QStringLiteral("nobody wrote here");

inline Said Valid()
{
    return {true, untouched};
}

inline Said Invalid(const char* reason)
{
    return {false, QLatin1Char('[') + QString::fromLatin1(reason) + QLatin1Char(']')};
}

inline Said NothingGiven()
{
    return Invalid("No folder is given");
}

inline Said Missing()
{
    return Invalid("The folder does not exist");
}

inline Said NotAFolder()
{
    return Invalid("This is not a folder");
}

inline Said Unreadable()
{
    return Invalid("The folder cannot be read");
}

inline Said Unwritable()
{
    return Invalid("The folder cannot be written to");
}

inline Said DiskFull()
{
    return Invalid("The disk is full");
}

inline Said Validate(const QString& path)
{
    QString reason = untouched;
    const bool valid = Zendra::Util::IsThisPathValid(path, &reason);
    return {valid, reason};
}
/// A folder to validate, and a translator that shows which texts are translated.
class PathValidationFixture : public testing::Test
{
protected:
    PathValidationFixture() { QCoreApplication::installTranslator(&brackets); }
    ~PathValidationFixture() override { QCoreApplication::removeTranslator(&brackets); }

    /// Gives something in the folder to the user that Unprivileged becomes, with this mode, and lets that
    /// user reach it.
    void GiveAway(const QString& relativePath, unsigned int mode) const
    {
        folder.SetPermissions(QStringLiteral("."), 0755);
        const QByteArray name = QFile::encodeName(folder.Path(relativePath));
        if (::geteuid() == 0) {
            ASSERT_EQ(::chown(name.constData(), Unprivileged::userId, Unprivileged::userId), 0);
        }
        folder.SetPermissions(relativePath, mode);
    }

    const TempFolder folder;

private:
    Brackets brackets;
};

} // namespace Tests

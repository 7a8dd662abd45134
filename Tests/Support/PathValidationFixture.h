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

/// Puts every text of the validation in brackets, so that tests see which texts are translated.
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

/// The result of a validation, with the reason if the folder is refused.
struct Validation
{
    bool valid;
    QString reason;
};

inline bool operator==(const Validation& left, const Validation& right)
{
    return left.valid == right.valid && left.reason == right.reason;
}

inline std::ostream& operator<<(std::ostream& stream, const Validation& validation)
{
    return stream << (validation.valid ? "valid, " : "invalid, ") << '"' << validation.reason.toStdString()
                  << '"';
}

inline const QString untouched = QStringLiteral("not written");

inline Validation Valid()
{
    return {true, untouched};
}

inline Validation Invalid(const char* reason)
{
    return {false, QLatin1Char('[') + QString::fromLatin1(reason) + QLatin1Char(']')};
}

inline Validation NothingGiven()
{
    return Invalid("No folder is given");
}

inline Validation Missing()
{
    return Invalid("The folder does not exist");
}

inline Validation NotAFolder()
{
    return Invalid("This is not a folder");
}

inline Validation Unreadable()
{
    return Invalid("The folder cannot be read");
}

inline Validation Unwritable()
{
    return Invalid("The folder cannot be written to");
}

inline Validation DiskFull()
{
    return Invalid("The disk is full");
}

inline Validation Validate(const PathText& path)
{
    QString reason = untouched;
    const bool valid = Zendra::Util::IsThisPathValid(path, &reason);
    return {valid, reason};
}

/// A folder to validate, with the translator above installed.
class PathValidationFixture : public testing::Test
{
protected:
    PathValidationFixture() { QCoreApplication::installTranslator(&brackets); }
    ~PathValidationFixture() override { QCoreApplication::removeTranslator(&brackets); }

    /// Gives an entry of the folder this mode and the user of Unprivileged as its owner, and lets that user
    /// enter the folder.
    void GiveAway(const PathText& relativePath, unsigned int mode) const
    {
        folder.SetPermissions(".", 0755);
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

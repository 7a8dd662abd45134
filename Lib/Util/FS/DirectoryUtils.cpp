#include "Lib/Util/FS/DirectoryUtils.h"

#include "Util/AlertBox.h"
#include "Util/PathValidation.h"

#include <QCoreApplication>
#include <QDir>
#include <QMessageBox>

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>

namespace Zendra::LW {
namespace {

using boost::multiprecision::cpp_int;

/// The last component of the path, without a copy: path::filename() would allocate a string for every entry.
/// std::find is faster than rfind() here.
std::string_view NameOf(const boost::filesystem::directory_entry& entry)
{
    const std::string& path = entry.path().native();
    const auto name = std::find(path.rbegin(), path.rend(), boost::filesystem::path::separator).base();
    return std::string_view(path).substr(static_cast<std::size_t>(name - path.begin()));
}

/// Whether cpp_int reads a text as octal. The text must not be empty.
bool IsOctal(const std::string& text)
{
    return text[0] == '0' && text[1] != 'x' && text[1] != 'X';
}

cpp_int ReadOctal(const std::string& digits)
{
    cpp_int number = 0;
    for (const char digit : digits)
        number = number * 8 + (digit - '0');
    return number;
}

/// Reads a number as cpp_int does. The text must not be empty.
cpp_int ReadNumber(const std::csub_match& text)
{
    // Nearly every number is decimal and fits into 64 bits; parsing it with cpp_int takes much longer.
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.first, text.second, number);
    if (*text.first != '0' && error == std::errc() && end == text.second)
        return number;
    // Intended: the text decides the base, so a padded number is octal and 08 is an error.
    const std::string digits = text.str();
    const cpp_int value(digits);
    // The constructor of cpp_int rejects what is not an octal number, but its result for some octal numbers
    // of more than 64 bits contains uninitialised memory.
    return IsOctal(digits) ? ReadOctal(digits) : value;
}

} // namespace

std::string GetNextAvaliableIndex(const ioPath& folder, const std::regex& pattern)
{
    cpp_int maximum = 0;
    std::cmatch match;
    for (boost::filesystem::directory_iterator entry = folder.iterator(), end; entry != end; ++entry) {
        const std::string_view name = NameOf(*entry);
        if (!std::regex_match(name.data(), name.data() + name.size(), match, pattern) || match.length(1) == 0)
            continue;
        cpp_int number = ReadNumber(match[1]);
        if (number > maximum)
            maximum = std::move(number);
    }

    ++maximum;
    std::string text = maximum.str();
    const auto isNoDigit = [](unsigned char character) { return character < '0' || character > '9'; };
    text.erase(std::remove_if(text.begin(), text.end(), isNoDigit), text.end());
    return text;
}

bool CheckPathAndAnnoyUserIfInvalid(const QString& path, QWidget* parent)
{
    QString reason;
    if (Util::IsThisPathValid(path, &reason))
        return true;

    // Intended: the path is inserted after the reason, so a "%1" in the reason is replaced by the path.
    const QString message =
        QCoreApplication::translate("DirectoryUtilsValidPath", "%1: %2").arg(reason).arg(path);
    // By value: in an application's own companion libraries, level 0 may have another name.
    constexpr auto level = Util::AlertBox::Level(0);
    Util::AlertBox alert(level, QStringLiteral(""), message, QMessageBox::Ok, parent,
                         Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    alert.Exec();
    return false;
}

bool PrepareFolder(const QString& path, QWidget* parent)
{
    // Intended: the folder is created before it is checked; if that fails, the check reports it.
    const QDir folder(path);
    if (!folder.exists())
        folder.mkpath(QStringLiteral("."));
    return CheckPathAndAnnoyUserIfInvalid(path, parent);
}

} // namespace Zendra::LW

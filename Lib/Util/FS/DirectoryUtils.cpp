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

/// The last part of the path as it stands there; path::filename() would make a string for every entry, and
/// rfind() is slower.
std::string_view NameOf(const boost::filesystem::directory_entry& entry)
{
    const std::string& path = entry.path().native();
    const auto name = std::find(path.rbegin(), path.rend(), boost::filesystem::path::separator).base();
    return std::string_view(path).substr(static_cast<std::size_t>(name - path.begin()));
}

/// Whether cpp_int reads a text that is not empty as octal.
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

/// Reads a text that is not empty, as cpp_int does.
cpp_int ReadNumber(const std::csub_match& text)
{
    // Nearly every number is decimal and fits a machine word; cpp_int's own reading takes much longer.
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.first, text.second, number);
    if (*text.first != '0' && error == std::errc() && end == text.second)
        return number;
    // Intended: the text decides the base, so a padded number is octal and 08 is an error.
    const std::string digits = text.str();
    const cpp_int value(digits);
    // It knows which texts are octal numbers, but some that are longer than a machine word it reads together
    // with memory that it has not cleared.
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

    // Intended: the path is filled in after the reason, so a "%1" inside the reason takes the path.
    const QString message =
        QCoreApplication::translate("DirectoryUtilsValidPath", "%1: %2").arg(reason).arg(path);
    // By its value: the companion libraries may be the application's own, in which level 0 has another name.
    constexpr auto level = Util::AlertBox::Level(0);
    Util::AlertBox alert(level, QStringLiteral(""), message, QMessageBox::Ok, parent,
                         Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    alert.Exec();
    return false;
}

bool PrepareFolder(const QString& path, QWidget* parent)
{
    // Intended: the folder is made before it is checked, and the check reports it when that fails.
    const QDir folder(path);
    if (!folder.exists())
        folder.mkpath(QStringLiteral("."));
    return CheckPathAndAnnoyUserIfInvalid(path, parent);
}

} // namespace Zendra::LW

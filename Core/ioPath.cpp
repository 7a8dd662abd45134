#include "Core/ioPath.h"

#include "Core/NullCharacter.h"

#include <boost/filesystem/operations.hpp>

#include <ostream>

namespace fs = boost::filesystem;

namespace Zendra {
namespace {

bool IsTooLong(const fs::path& path)
{
    boost::system::error_code error;
    fs::status(path, error);
    return error == boost::system::errc::filename_too_long;
}

/// Checks the result and not the error: the folder may exist already, or another process may create it now.
bool MakeFolder(const fs::path& path)
{
    boost::system::error_code ignored;
    fs::create_directory(path, ignored);
    return fs::is_directory(path, ignored);
}

} // namespace

ioPath::ioPath(const char* utf8) : path(utf8)
{
}

ioPath::ioPath(const std::string& utf8) : path(utf8)
{
}

ioPath::ioPath(const fs::path& other) : path(other)
{
}

std::string ioPath::string() const
{
    return path.string();
}

bool ioPath::exists() const
{
    boost::system::error_code ignored;
    return !HasNullCharacter(path.native()) && fs::exists(path, ignored);
}

// Not Boost's create_directories(): it recurses once per name and overflows the stack for a long path.
bool ioPath::create_directories(const ioPath& folder)
{
    const std::string& whole = folder.path.native();
    if (HasNullCharacter(whole) || IsTooLong(folder.path))
        return false;

    for (size_t end = 0; end != std::string::npos;) {
        end = whole.find('/', end + 1);
        if (!MakeFolder(whole.substr(0, end)))
            return false;
    }
    return true;
}

fs::directory_iterator ioPath::iterator() const
{
    if (HasNullCharacter(path.native())) {
        throw fs::filesystem_error("Zendra::ioPath::iterator", path,
                                   make_error_code(boost::system::errc::invalid_argument));
    }
    return fs::directory_iterator(path);
}

std::ostream& operator<<(std::ostream& stream, const ioPath& path)
{
    return stream << path.string();
}

} // namespace Zendra

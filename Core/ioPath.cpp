#include "Core/ioPath.h"

#include <boost/filesystem/operations.hpp>

#include <ostream>

namespace fs = boost::filesystem;

namespace Zendra {
namespace {

/// The system would read such a path only up to the null character, and so take it for another one.
bool HasNullCharacter(const fs::path& path)
{
    return path.native().find('\0') != std::string::npos;
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
    return !HasNullCharacter(path) && fs::exists(path, ignored);
}

bool ioPath::create_directories(const ioPath& folder)
{
    if (HasNullCharacter(folder.path))
        return false;

    boost::system::error_code ignored;
    fs::create_directories(folder.path, ignored);
    return fs::is_directory(folder.path, ignored);
}

fs::directory_iterator ioPath::iterator() const
{
    if (HasNullCharacter(path)) {
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

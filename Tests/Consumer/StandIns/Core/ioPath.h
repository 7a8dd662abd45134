#pragma once

#define STAND_IN_CORE

#include <boost/filesystem.hpp>

#include <string>

namespace Zendra {

/// The only path that exists is called "stand-in".
class ioPath
{
public:
    ioPath(const char* text) : text(text) {}
    ioPath(const std::string& text) : text(text) {}

    std::string string() const { return text; }
    bool exists() const { return text == "stand-in"; }
    static bool create_directories(const ioPath& path) { return path.exists(); }
    boost::filesystem::directory_iterator iterator() const
    {
        return boost::filesystem::directory_iterator(text);
    }

private:
    std::string text;
};

} // namespace Zendra

#include "Tests/Support/DeepFolder.h"

#include "Tests/Support/Require.h"

#include <QFile>

#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tests {

DeepFolder::DeepFolder()
{
    const std::string name(200, 'd');
    std::string path = QFile::encodeName(folder.Path()).toStdString();
    const auto room = [&] { return PATH_MAX - 1 - path.size() - 1; };
    Enter(path);
    while (room() > 255) {
        Enter(name);
        path += '/' + name;
    }
    longestPath = path + '/' + std::string(room(), 'f');
    MakeFile(std::string(room(), 'f'));
    for (int level = 0; level < 3; ++level) {
        Enter(name);
        MakeFile("beyond");
    }
}

DeepFolder::~DeepFolder()
{
    while (!levels.empty()) {
        const Level last = levels.back();
        levels.pop_back();
        ::unlinkat(last.descriptor, last.file.c_str(), 0);
        ::close(last.descriptor);
        if (!levels.empty())
            ::unlinkat(levels.back().descriptor, last.name.c_str(), AT_REMOVEDIR);
    }
}

int DeepFolder::Current() const
{
    return levels.empty() ? AT_FDCWD : levels.back().descriptor;
}

void DeepFolder::Enter(const std::string& name)
{
    ::mkdirat(Current(), name.c_str(), 0700);
    const int descriptor = ::openat(Current(), name.c_str(), O_DIRECTORY | O_RDONLY | O_CLOEXEC);
    Require(descriptor >= 0, "enter " + name);
    levels.push_back({name, descriptor, {}});
}

void DeepFolder::MakeFile(const std::string& name)
{
    const int file = ::openat(Current(), name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    Require(file >= 0, "make " + name);
    ::close(file);
    levels.back().file = name;
}

} // namespace Tests

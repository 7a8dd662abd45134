#include "Lib/Util/FS/DirectoryUtils.h"
#include "Tests/Fuzz/NumberOracle.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

// An input is the number of a pattern and the names of files, each after a slash: "0/a1/a2/a7".

namespace Tests {
namespace {

constexpr std::size_t nameLimit = 12;
constexpr std::size_t nameLengthLimit = 100;

/// A folder for the whole run.
class Folder
{
public:
    Folder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "FuzzNextIndex-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make a folder");
        path = pattern;
    }
    ~Folder()
    {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    void Fill(const std::vector<std::string>& names) const
    {
        for (const std::string& name : names) {
            const int file = ::open((path + '/' + name).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
            if (file == -1)
                throw std::runtime_error("cannot make a file");
            ::close(file);
        }
    }

    void Empty(const std::vector<std::string>& names) const
    {
        for (const std::string& name : names)
            ::unlink((path + '/' + name).c_str());
    }

    std::string path;
};

std::vector<std::string> ReadNames(const std::string& input)
{
    std::vector<std::string> names;
    for (std::size_t slash = input.find('/'); slash != std::string::npos && names.size() < nameLimit;) {
        const std::size_t next = input.find('/', slash + 1);
        std::string name = input.substr(slash + 1, next == std::string::npos ? next : next - slash - 1);
        name.resize(std::min({name.size(), name.find('\0'), nameLengthLimit}));
        const bool isUsable = !name.empty() && name != "." && name != "..";
        if (isUsable && std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
        slash = next;
    }
    return names;
}

[[noreturn]] void Fail(const std::string& pattern, const std::vector<std::string>& names,
                       const std::string& text)
{
    std::fprintf(stderr, "pattern %s\n", pattern.c_str());
    for (const std::string& name : names)
        std::fprintf(stderr, "name    %s\n", name.c_str());
    std::fprintf(stderr, "%s\n", text.c_str());
    std::abort();
}

const std::regex& Compiled(const NumberPattern& pattern)
{
    static const std::vector<std::regex> expressions = [] {
        std::vector<std::regex> compiled;
        for (const NumberPattern& each : NumberPatterns())
            compiled.emplace_back(each.expression);
        return compiled;
    }();
    return expressions[static_cast<std::size_t>(&pattern - NumberPatterns().data())];
}

void Compare(const Folder& folder, const NumberPattern& pattern, const std::vector<std::string>& names)
{
    const NumberAnswer answer = NextNumber(pattern, names);
    try {
        const std::string next = Zendra::LW::GetNextAvaliableIndex(folder.path, Compiled(pattern));
        if (answer.next.empty() || next != answer.next)
            Fail(pattern.expression, names, "gave " + next + " and not " + answer.next);
    } catch (const std::runtime_error& error) {
        if (std::find(answer.errors.begin(), answer.errors.end(), error.what()) == answer.errors.end())
            Fail(pattern.expression, names, std::string("threw ") + error.what());
    }
}

} // namespace
} // namespace Tests

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Tests;
    static const Folder folder;
    if (size == 0)
        return 0;

    const NumberPattern& pattern = NumberPatterns()[data[0] % NumberPatterns().size()];
    const std::vector<std::string> names = ReadNames(std::string(reinterpret_cast<const char*>(data), size));
    folder.Fill(names);
    Compare(folder, pattern, names);
    folder.Empty(names);
    return 0;
}

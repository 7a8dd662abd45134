#include "Core/ioPath.h"

#include "Tests/Support/ByteFolder.h"

#include <QProcess>

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

// Compares create_directories() with "mkdir -p" on random paths.

using Zendra::ioPath;

namespace {

constexpr int pathCount = 100;

/// The folder at the start.
class StartFolder : public Tests::ByteFolder
{
public:
    StartFolder()
    {
        Write("file");
        Write("folder/file");
        MakeFolder("folder/below");
        Link("folder", "toFolder");
        Link("file", "toFile");
        Link("missing", "dangling");
        Link("loop", "loop");
    }

    std::vector<std::string> SortedTree() const
    {
        std::vector<std::string> tree = Tree();
        std::sort(tree.begin(), tree.end());
        return tree;
    }
};

std::vector<std::string> RandomPaths(unsigned int seed)
{
    const std::vector<std::string> names = {"a",        "b",      "new name", "file",     "folder", "below",
                                            "toFolder", "toFile", "dangling", "loop",     ".",      "..",
                                            "",         "-p",     "\xC3\xBC", "line\nend"};
    std::mt19937 random(seed);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    std::vector<std::string> paths;
    while (paths.size() < pathCount) {
        std::string path;
        // Never leaves the test's folder.
        int depth = 0;
        for (std::size_t left = 1 + below(5); left > 0; --left) {
            const std::string& name = names[below(names.size())];
            if (name == ".." && --depth < 0)
                break;
            depth += name != ".." && name != "." && !name.empty() && name != "toFolder";
            path += (path.empty() ? "" : "/") + name;
        }
        // An empty first name would make the path absolute.
        path.erase(0, path.find_first_not_of('/'));
        paths.push_back(path);
    }
    return paths;
}

/// Whether mkdir could create each of them in the current folder.
std::vector<bool> MakeWithMkdir(const std::vector<std::string>& paths)
{
    QStringList arguments = {QStringLiteral("-c"),
                             QStringLiteral("for path; do mkdir -p -- \"$path\" 2>&-; echo $?; done"),
                             QStringLiteral("sh")};
    for (const std::string& path : paths)
        arguments << QString::fromStdString(path);
    QProcess shell;
    shell.start(QStringLiteral("sh"), arguments);
    if (!shell.waitForFinished())
        throw std::runtime_error("sh did not end");

    std::vector<bool> made;
    for (const QByteArray& status : shell.readAllStandardOutput().split('\n'))
        if (!status.isEmpty())
            made.push_back(status == "0");
    return made;
}

std::vector<bool> MakeWithLibrary(const std::vector<std::string>& paths)
{
    std::vector<bool> made;
    for (const std::string& path : paths)
        made.push_back(ioPath::create_directories(path));
    return made;
}

class CreateDirectoriesModelTest : public testing::TestWithParam<unsigned int>
{
protected:
    ~CreateDirectoriesModelTest() override { std::filesystem::current_path(before); }

    const std::filesystem::path before = std::filesystem::current_path();
};

TEST_P(CreateDirectoriesModelTest, CreatesWhatMkdirCreates)
{
    const std::vector<std::string> paths = RandomPaths(GetParam());
    const StartFolder expected;
    const StartFolder actual;
    std::filesystem::current_path(expected.Path());
    const std::vector<bool> createdByMkdir = MakeWithMkdir(paths);
    ASSERT_EQ(createdByMkdir.size(), paths.size());
    std::filesystem::current_path(actual.Path());

    const std::vector<bool> made = MakeWithLibrary(paths);

    for (std::size_t i = 0; i < paths.size(); ++i)
        EXPECT_EQ(made[i], createdByMkdir[i]) << "path " << i << ": " << paths[i];
    EXPECT_EQ(actual.SortedTree(), expected.SortedTree());
}

INSTANTIATE_TEST_SUITE_P(Seeds, CreateDirectoriesModelTest, testing::Range(1U, 9U));

} // namespace

#include "Core/FileOperations.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/Threads.h"

#include <QByteArray>

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <glib.h>

#ifdef __SANITIZE_ADDRESS__
#    include <sanitizer/lsan_interface.h>
#endif

using testing::Each;
using Tests::RunOnThreads;
using Zendra::Core::MoveToTrash;

namespace fs = std::filesystem;

namespace {

constexpr int threadCount = 8;
constexpr int filesOfAThread = 25;

std::string ContentOf(const fs::path& file)
{
    return std::string(std::istreambuf_iterator<char>(std::ifstream(file).rdbuf()), {});
}

/// All tests use the same trash, since GLib reads the environment only once in a process.
class MoveToTrashThreadsTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        Tests::PreferATemporaryFolderWithATrash();
        folder = std::make_unique<Tests::ByteFolder>();
        qputenv("HOME", QByteArray::fromStdString(folder->Path()));
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(folder->Path("data")));
    }

    static void TearDownTestSuite() { folder.reset(); }

    void SetUp() override
    {
        if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
            GTEST_SKIP() << why;
        ASSERT_EQ(g_get_user_data_dir(), folder->Path("data"));
        fs::remove_all(folder->Path("data"));
        fs::remove_all(folder->Path("work"));
    }

    /// The contents of the files in the trash, by their original paths. Files without an info are listed by
    /// their names.
    static std::map<std::string, std::string> Trashed()
    {
        std::map<std::string, std::string> trashed;
        const fs::path trash = folder->Path("data/Trash");
        for (const auto& file : fs::directory_iterator(trash / "files")) {
            const std::string name = file.path().filename();
            const std::string info = ContentOf(trash / "info" / (name + ".trashinfo"));
            const size_t start = info.find("\nPath=");
            // Percent-encoded.
            const std::string rest = start == std::string::npos ? std::string() : info.substr(start + 6);
            const std::string path =
                QByteArray::fromPercentEncoding(QByteArray::fromStdString(rest.substr(0, rest.find('\n'))))
                    .toStdString();
            trashed[start == std::string::npos ? name : path] = ContentOf(file.path());
        }
        return trashed;
    }

    static size_t InfoCount()
    {
        const fs::directory_iterator infos(folder->Path("data/Trash/info"));
        return static_cast<size_t>(std::distance(begin(infos), end(infos)));
    }

    static std::unique_ptr<Tests::ByteFolder> folder;
};

std::unique_ptr<Tests::ByteFolder> MoveToTrashThreadsTest::folder;

TEST_F(MoveToTrashThreadsTest, KeepsAllFilesWithTheSameName)
{
    std::array<std::vector<std::string>, threadCount> files;
    std::map<std::string, std::string> expected;
    for (int file = 0; file < threadCount * filesOfAThread; ++file) {
        const std::string name = "work/" + std::to_string(file) + "/take.mp4";
        const std::string path = folder->Write(name, name);
        files[static_cast<size_t>(file % threadCount)].push_back(path);
        expected[path] = name;
    }
    std::atomic<int> moved = 0;

    RunOnThreads(threadCount, [&](int thread) {
        for (const std::string& file : files[static_cast<size_t>(thread)])
            moved += MoveToTrash(file);
    });

    EXPECT_EQ(moved, threadCount * filesOfAThread);
    EXPECT_EQ(Trashed(), expected);
    EXPECT_EQ(InfoCount(), expected.size());
}

TEST_F(MoveToTrashThreadsTest, OneThreadMovesAFile)
{
    std::vector<std::string> files;
    std::map<std::string, std::string> expected;
    for (int file = 0; file < filesOfAThread; ++file) {
        const std::string name = "work/" + std::to_string(file);
        files.push_back(folder->Write(name, name));
        expected[files.back()] = name;
    }
    std::array<std::atomic<int>, filesOfAThread> moved = {};

    RunOnThreads(threadCount, [&](int /*thread*/) {
#ifdef __SANITIZE_ADDRESS__
        // GIO leaks a few strings when it refuses a file.
        const __lsan::ScopedDisabler ignoreLeaks;
#endif
        for (size_t file = 0; file < files.size(); ++file)
            moved[file] += MoveToTrash(files[file]);
    });

    EXPECT_THAT(std::vector<int>(moved.begin(), moved.end()), Each(1));
    EXPECT_EQ(Trashed(), expected);
    EXPECT_EQ(InfoCount(), expected.size());
}

TEST_F(MoveToTrashThreadsTest, KeepsAllHardLinksToOneFile)
{
    const std::string original = folder->Write("work/original", "one file");
    std::array<std::string, threadCount> links;
    std::map<std::string, std::string> expected;
    for (int thread = 0; thread < threadCount; ++thread) {
        std::string& link = links[static_cast<size_t>(thread)];
        link = folder->MakeFolder("work/" + std::to_string(thread)) + "/take.mp4";
        fs::create_hard_link(original, link);
        expected[link] = "one file";
    }
    std::atomic<int> moved = 0;

    RunOnThreads(threadCount, [&](int thread) { moved += MoveToTrash(links[static_cast<size_t>(thread)]); });

    EXPECT_EQ(moved, threadCount);
    EXPECT_EQ(Trashed(), expected);
    EXPECT_EQ(InfoCount(), expected.size());
}

} // namespace

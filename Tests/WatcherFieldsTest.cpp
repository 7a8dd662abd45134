// The fields of the watchers, which debuggers and older binaries read in place.

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/WatcherFixture.h"

#include <cstring>

using Zendra::LW::DirectoryChecker;
using Zendra::LW::DirectoryWatcher;

namespace Tests {
namespace {

// An object has its QObject part and a pointer to its Impl, which begins with these fields.

struct CheckerFields
{
    QList<QFileInfo> fileInfos;
    QStringList nameFilters;
    Predicate filter;
    QString dirPath;
    unsigned int depth;
};

struct WatcherFields
{
    QFileSystemWatcher* watcher;
    CheckerFields common;
};

static_assert(sizeof(DirectoryChecker) == sizeof(QObject) + sizeof(void*));
static_assert(sizeof(DirectoryWatcher) == sizeof(QObject) + sizeof(void*));

template <typename Fields>
const Fields& FieldsOf(const QObject& object)
{
    const Fields* fields = nullptr;
    std::memcpy(&fields, reinterpret_cast<const char*>(&object) + sizeof(QObject), sizeof(fields));
    return *fields;
}

void ExpectEmptySettings(const CheckerFields& fields)
{
    EXPECT_TRUE(fields.fileInfos.isEmpty());
    EXPECT_TRUE(fields.nameFilters.isEmpty());
    EXPECT_FALSE(fields.filter);
    EXPECT_EQ(fields.depth, 0U);
}

using DirectoryWatcherFieldsTest = WatcherFixture;

TEST_F(DirectoryWatcherFieldsTest, AreEmptyAtFirst)
{
    const auto& fields = FieldsOf<WatcherFields>(*watcher);

    EXPECT_EQ(fields.watcher, nullptr);
    ExpectEmptySettings(fields.common);
    EXPECT_TRUE(fields.common.dirPath.isEmpty());
}

TEST_F(DirectoryWatcherFieldsTest, HaveTheWatchInTheirOrder)
{
    StartWith({"a.txt", "b.txt"}, 7, {"*.txt"}, [](const QFileInfo& info) { return info.size() == 7; });

    const auto& fields = FieldsOf<WatcherFields>(*watcher);

    EXPECT_EQ(fields.watcher, System());
    EXPECT_EQ(fields.common.fileInfos, watcher->GetFileInfoList());
    EXPECT_EQ(fields.common.nameFilters, NameFilters{"*.txt"});
    ASSERT_TRUE(fields.common.filter);
    EXPECT_TRUE(fields.common.filter(QFileInfo(Path("a.txt"))));
    EXPECT_EQ(fields.common.dirPath, folder.Path());
    EXPECT_EQ(fields.common.depth, 7U);
}

TEST_F(DirectoryWatcherFieldsTest, AreEmptyButForThePathAfterAStop)
{
    StartWith({"a.txt"}, 7, {"*.txt"}, [](const QFileInfo&) { return true; });

    watcher->StopWatching();
    const auto& fields = FieldsOf<WatcherFields>(*watcher);

    EXPECT_EQ(fields.watcher, nullptr);
    ExpectEmptySettings(fields.common);
    EXPECT_EQ(fields.common.dirPath, folder.Path());
}

using DirectoryCheckerFieldsTest = CheckerFixture;

TEST_F(DirectoryCheckerFieldsTest, AreEmptyAtFirst)
{
    const auto& fields = FieldsOf<CheckerFields>(checker);

    ExpectEmptySettings(fields);
    EXPECT_TRUE(fields.dirPath.isEmpty());
}

TEST_F(DirectoryCheckerFieldsTest, HaveTheWatchInTheirOrder)
{
    StartWith({"a.txt"}, 7, {"*.txt"}, [](const QFileInfo& info) { return info.isFile(); });

    const auto& fields = FieldsOf<CheckerFields>(checker);

    ASSERT_EQ(fields.fileInfos.size(), 1);
    EXPECT_EQ(fields.fileInfos.first().filePath(), Path("a.txt"));
    EXPECT_EQ(fields.nameFilters, NameFilters{"*.txt"});
    ASSERT_TRUE(fields.filter);
    EXPECT_TRUE(fields.filter(QFileInfo(Path("a.txt"))));
    EXPECT_EQ(fields.dirPath, folder.Path());
    EXPECT_EQ(fields.depth, 7U);
}

TEST_F(DirectoryCheckerFieldsTest, AreEmptyAfterAStop)
{
    StartWith({"a.txt"}, 7, {"*.txt"}, [](const QFileInfo& info) { return info.isFile(); });

    checker.StopWatching();
    const auto& fields = FieldsOf<CheckerFields>(checker);

    ExpectEmptySettings(fields);
    EXPECT_TRUE(fields.dirPath.isNull());
}

} // namespace
} // namespace Tests

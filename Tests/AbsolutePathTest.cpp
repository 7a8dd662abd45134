#include "Lib/Util/FS/AbsolutePath.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using Tests::CurrentFolder;
using Tests::TempFolder;
using Zendra::LW::AbsolutePathOf;
using Zendra::LW::IsAbsoluteAndClean;

struct PathRow
{
    const char* path;
    bool isAbsoluteAndClean;
    std::string name;
};

void PrintTo(const PathRow& row, std::ostream* out)
{
    *out << row.path;
}

class AbsolutePathTest : public testing::TestWithParam<PathRow>
{
protected:
    QString path = QString::fromUtf8(GetParam().path);
};

TEST_P(AbsolutePathTest, EqualsThatOfQt)
{
    EXPECT_EQ(AbsolutePathOf(QFileInfo(path)), QFileInfo(path).absoluteFilePath());
}

TEST_P(AbsolutePathTest, IsThePathItselfIfAbsoluteAndClean)
{
    EXPECT_EQ(IsAbsoluteAndClean(path), GetParam().isAbsoluteAndClean);
    EXPECT_EQ(QFileInfo(path).absoluteFilePath() == path, GetParam().isAbsoluteAndClean);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, AbsolutePathTest,
    testing::Values(PathRow{"/", true, "Root"}, PathRow{"/a.txt", true, "InTheRoot"},
                    PathRow{"/sub/a b.txt", true, "Below"}, PathRow{"/sub/..a", true, "DotsInAName"},
                    PathRow{"/sub/\u00fcber.txt", true, "NotAscii"}, PathRow{"a.txt", false, "Relative"},
                    PathRow{"sub/a.txt", false, "RelativeBelow"}, PathRow{"./a.txt", false, "Here"},
                    PathRow{"../a.txt", false, "Above"}, PathRow{"/sub/../a.txt", false, "UpAndDown"},
                    PathRow{"/sub/./a.txt", false, "Dot"}, PathRow{"/sub//a.txt", false, "TwoSlashes"},
                    PathRow{"//sub/a.txt", false, "TwoSlashesFirst"},
                    PathRow{"/sub/..", false, "UpAtTheEnd"}),
    [](const auto& row) { return row.param.name; });

TEST(RelativeAbsolutePathTest, DoesNotChangeWithTheCurrentFolder)
{
    const TempFolder folder;
    const TempFolder other;
    const QFileInfo info(QStringLiteral("a.txt"));
    const QString path = folder.Path("a.txt");
    const CurrentFolder here(folder.Path());
    ASSERT_EQ(AbsolutePathOf(info), path);

    const CurrentFolder there(other.Path());

    EXPECT_EQ(AbsolutePathOf(info), path);
    EXPECT_EQ(info.absoluteFilePath(), path);
}

} // namespace

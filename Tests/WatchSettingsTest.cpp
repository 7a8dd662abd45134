#include "Lib/Util/FS/WatchSettings.h"

#include <gtest/gtest.h>

namespace Zendra::LW {
namespace {

TEST(FilePredicateTest, AcceptsEveryFileWhenItIsEmpty)
{
    EXPECT_TRUE(Accepts({}, QFileInfo()));
    EXPECT_FALSE(MakeSharedPredicate({}));
}

TEST(FilePredicateTest, IsAskedAboutTheFile)
{
    const FilePredicate predicate =
        MakeSharedPredicate([](const QFileInfo& info) { return info.fileName() == QStringLiteral("a"); });

    EXPECT_TRUE(Accepts(predicate, QFileInfo(QStringLiteral("/a"))));
    EXPECT_FALSE(Accepts(predicate, QFileInfo(QStringLiteral("/b"))));
}

TEST(FilePredicateTest, SharesStateWithItsCopiesButNotWithTheOriginal)
{
    const FilePredicate given = [asked = 0](const QFileInfo&) mutable { return ++asked > 2; };
    const FilePredicate predicate = MakeSharedPredicate(given);
    const FilePredicate copy = predicate;

    EXPECT_FALSE(predicate(QFileInfo()));
    EXPECT_FALSE(copy(QFileInfo()));
    EXPECT_TRUE(predicate(QFileInfo()));
    EXPECT_FALSE(given(QFileInfo()));
}

} // namespace
} // namespace Zendra::LW

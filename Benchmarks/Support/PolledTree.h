#pragma once

#include "Benchmarks/Support/Baselines.h"
#include "Benchmarks/Support/FolderTree.h"

#include <QByteArray>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Benchmarks {

/// A folder that all who poll it share; made when the first of them needs it, and changed between passes.
class PolledTree
{
public:
    struct Shape
    {
        std::string text; ///< "100,000 files in 100 folders"
        int folders;
        int filesPerFolder;
        bool sameNames = false;
        QString parent = {}; ///< where to make it; the system's folder for temporary files if empty
    };

    enum class Content
    {
        Original,
        WithNewFiles,
        WithoutSomeFiles
    };

    explicit PolledTree(Shape wanted) : shape(std::move(wanted)) {}

    const Shape& GetShape() const { return shape; }
    bool IsLarge() const { return shape.folders * shape.filesPerFolder > 500000; }
    FolderTree& Files();
    QString Path() { return Files().Path(); }
    std::string NativePath();

    /// Makes the tree, too, so that no timed pass does.
    void Make(Content wanted);
    /// Which content it is, counted from the first.
    int Version() const { return version; }

private:
    Shape shape;
    std::unique_ptr<FolderTree> files;
    Content content = Content::Original;
    int version = 0;
};

/// What a contender looks at, and when its clock is.
struct PollSettings
{
    QStringList nameFilters = {};
    std::function<bool(const QFileInfo&)> predicate = {};
    KeepsName keeps = {};                ///< the same as both, for those who go without the library
    std::optional<QByteArray> zone = {}; ///< as TZ takes it, null for none; the environment's if not given
};

/// Somebody who polls a tree: starts, and makes a pass each time that he is called again.
using Pass = std::function<void()>;
using Start = std::function<Pass()>;

Start Library(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings);
Start RawWalk(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings);
Start Poller(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings);
/// Knows no filters.
Start TranscribedRules(const std::shared_ptr<PolledTree>& tree);

/// Somebody who has started long ago: every pass but the first.
class LaterPasses
{
public:
    LaterPasses(std::shared_ptr<PolledTree> polledTree, Start start)
        : tree(std::move(polledTree)), startAnew(std::move(start))
    {
    }

    /// Makes passes until it knows all that is there, to be called before what is timed.
    void CatchUp();
    void MakePass();

private:
    std::shared_ptr<PolledTree> tree;
    Start startAnew;
    Pass pass;
    int knownVersion = 0;
};

} // namespace Benchmarks

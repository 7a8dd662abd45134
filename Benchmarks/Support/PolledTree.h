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

/// A folder that several contenders poll. It is created at the first use and changed between passes.
class PolledTree
{
public:
    struct Shape
    {
        std::string text; ///< "100,000 files in 100 folders"
        int folders;
        int filesPerFolder;
        bool sameNames = false;
        QString parent = {}; ///< where to create it; in the temporary folder if empty
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

    /// Also creates the tree, so that no timed pass does.
    void Make(Content wanted);
    /// Increases with every change of the content.
    int Version() const { return version; }

private:
    Shape shape;
    std::unique_ptr<FolderTree> files;
    Content content = Content::Original;
    int version = 0;
};

/// Which files a contender polls, and in which time zone.
struct PollSettings
{
    QStringList nameFilters = {};
    std::function<bool(const QFileInfo&)> predicate = {};
    KeepsName keeps = {}; ///< the same as both, for the contenders without the library
    /// The value of TZ, null to unset it. Without a value TZ is left unchanged.
    std::optional<QByteArray> zone = {};
};

/// A contender: the first function starts to poll a tree, and its result makes one pass per call.
using Pass = std::function<void()>;
using Start = std::function<Pass()>;

Start Library(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings);
Start RawWalk(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings);
Start Poller(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings);
/// Supports no filters.
Start TranscribedRules(const std::shared_ptr<PolledTree>& tree);

/// A contender that has made its first pass already.
class LaterPasses
{
public:
    LaterPasses(std::shared_ptr<PolledTree> polledTree, Start start)
        : tree(std::move(polledTree)), startContender(std::move(start))
    {
    }

    /// Makes the passes that are needed to know all files. Call it before a timed pass.
    void CatchUp();
    void MakePass();

private:
    std::shared_ptr<PolledTree> tree;
    Start startContender;
    Pass pass;
    int knownVersion = 0;
};

} // namespace Benchmarks

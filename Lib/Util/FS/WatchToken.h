#pragma once

#include <memory>
#include <utility>

namespace Zendra::LW {

/// Tells a pass whether the watch that it works for still goes on.
///
/// A slot or a predicate may stop, restart or destroy the watcher that calls it. The pass asks after each
/// such call, before it touches the watcher again.
class WatchToken
{
public:
    bool IsExpired() const { return watch.expired(); }

private:
    friend class WatchTokenSource;
    explicit WatchToken(std::weak_ptr<const char> observed) : watch(std::move(observed)) {}

    std::weak_ptr<const char> watch;
};

/// A member of the watcher: its tokens expire when the watcher is destroyed, too.
class WatchTokenSource
{
public:
    WatchToken GetToken() const { return WatchToken(watch); }
    /// Expires all tokens handed out before: another watch begins, or none.
    void Invalidate() { watch = std::make_shared<const char>(); }

private:
    std::shared_ptr<const char> watch = std::make_shared<const char>();
};

} // namespace Zendra::LW

#pragma once

#include <memory>
#include <utility>

namespace Zendra::LW {

/// Tells a pass whether its watch has ended.
///
/// A slot or a predicate may stop, restart or destroy the watcher that calls it. The pass checks the token
/// after each such call, before it uses the watcher again.
class WatchToken
{
public:
    bool IsExpired() const { return watch.expired(); }

private:
    friend class WatchTokenSource;
    explicit WatchToken(std::weak_ptr<const char> observed) : watch(std::move(observed)) {}

    std::weak_ptr<const char> watch;
};

/// A member of the watcher, so its tokens also expire when the watcher is destroyed.
class WatchTokenSource
{
public:
    WatchToken GetToken() const { return WatchToken(watch); }
    /// Makes all earlier tokens expire: the watch has ended, or another one begins.
    void Invalidate() { watch = std::make_shared<const char>(); }

private:
    std::shared_ptr<const char> watch = std::make_shared<const char>();
};

} // namespace Zendra::LW

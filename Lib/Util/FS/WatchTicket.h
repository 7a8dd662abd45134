#pragma once

#include <memory>

namespace Zendra::LW {

/// Tells a pass whether the watch that it works for is still the same one.
///
/// A slot or a predicate may stop, restart or destroy the watcher that calls it. The pass asks after each
/// such call, before it touches the watcher again.
class WatchTicket
{
public:
    bool IsOver() const { return token.expired(); }

private:
    friend class WatchTicketIssuer;
    explicit WatchTicket(std::weak_ptr<const char> validWhile) : token(std::move(validWhile)) {}

    std::weak_ptr<const char> token;
};

/// Held by a watcher for its whole life: its tickets are over once it is gone, too.
class WatchTicketIssuer
{
public:
    WatchTicket Issue() const { return WatchTicket(token); }
    /// Ends all tickets issued before: another watch begins, or none.
    void Renew() { token = std::make_shared<const char>(); }

private:
    std::shared_ptr<const char> token = std::make_shared<const char>();
};

} // namespace Zendra::LW

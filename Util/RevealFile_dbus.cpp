#include "Util/RevealFile.h"

#include <QByteArray>

#include <limits>
#include <memory>
#include <utility>

#include <gio/gio.h>

namespace Zendra::Util {
namespace {

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GSource* source) const { g_source_unref(source); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
};

template <typename T>
using Handle = std::unique_ptr<T, Unref>;

/// Runs asynchronous operations synchronously, one after the other, with one time limit for all of them: once
/// it has passed, the running operation and all later ones are cancelled.
///
/// They use a main context of their own, so no other code of the application runs meanwhile.
class LimitedOperations
{
public:
    explicit LimitedOperations(std::chrono::milliseconds limit)
        : context(g_main_context_new()), cancellable(g_cancellable_new())
    {
        g_main_context_push_thread_default(context.get());
        const Handle<GSource> timer(g_timeout_source_new(static_cast<guint>(limit.count())));
        g_source_set_callback(timer.get(), &Cancel, cancellable.get(), nullptr);
        g_source_attach(timer.get(), context.get());
    }
    ~LimitedOperations() { g_main_context_pop_thread_default(context.get()); }
    LimitedOperations(const LimitedOperations&) = delete;
    LimitedOperations& operator=(const LimitedOperations&) = delete;

    /// Starts an operation by start(cancellable, callback, data) and blocks until it has finished, failed or
    /// been cancelled.
    template <typename Start>
    Handle<GAsyncResult> Run(Start start)
    {
        GAsyncResult* result = nullptr;
        start(cancellable.get(), &StoreResult, &result);
        while (!result)
            g_main_context_iteration(context.get(), TRUE);
        return Handle<GAsyncResult>(result);
    }

    /// Releases a connection and blocks until it has been deleted. No answer from the bus is needed for that.
    ///
    /// When the bus closes the connection, an event is queued in the context. It holds a reference to the
    /// connection, and the connection one to the context: if the event never ran, all three would leak.
    void Release(Handle<GDBusConnection> connection)
    {
        static GSourceFuncs once = {nullptr, nullptr, &RemoveSource, nullptr, nullptr, nullptr};
        const Handle<GSource> deletion(g_source_new(&once, sizeof(GSource)));
        g_source_attach(deletion.get(), context.get());
        g_object_set_data_full(G_OBJECT(connection.get()), "Zendra::Util::RevealFile",
                               g_source_ref(deletion.get()), &MakeReady);
        connection.reset();
        while (!g_source_is_destroyed(deletion.get()))
            g_main_context_iteration(context.get(), TRUE);
    }

private:
    static gboolean RemoveSource(GSource* /*source*/, GSourceFunc /*callback*/, gpointer /*data*/)
    {
        return G_SOURCE_REMOVE;
    }

    /// May be called on any thread.
    static void MakeReady(gpointer source)
    {
        const Handle<GSource> ready(static_cast<GSource*>(source));
        g_source_set_ready_time(ready.get(), 0);
    }

    static gboolean Cancel(gpointer cancellable)
    {
        g_cancellable_cancel(static_cast<GCancellable*>(cancellable));
        return G_SOURCE_REMOVE;
    }

    static void StoreResult(GObject* /*source*/, GAsyncResult* result, gpointer place)
    {
        *static_cast<GAsyncResult**>(place) = G_ASYNC_RESULT(g_object_ref(result));
    }

    const Handle<GMainContext> context;
    const Handle<GCancellable> cancellable;
};

/// The address of the session bus. If none runs, none is started: no file browser would be connected to it.
QByteArray SessionBusAddress()
{
    QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return address;
    const QByteArray socket = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    return "unix:path=" + socket.toPercentEncoding("/", "~");
}

/// Null when there is no bus, or it refuses the connection.
///
/// A private connection: the one from g_bus_get() is shared by the whole process and has no time limit.
/// Intended: made without G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION, which would send the Hello message
/// in a way that cannot be cancelled.
Handle<GDBusConnection> Connect(LimitedOperations& operations)
{
    const QByteArray address = SessionBusAddress();
    const Handle<GAsyncResult> result = operations.Run([&](GCancellable* cancellable,
                                                           GAsyncReadyCallback callback, gpointer data) {
        g_dbus_connection_new_for_address(address.constData(), G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT,
                                          nullptr, cancellable, callback, data);
    });
    return Handle<GDBusConnection>(g_dbus_connection_new_for_address_finish(result.get(), nullptr));
}

struct Method
{
    const char* service; ///< the name on the bus, and of the interface
    const char* path;
    const char* name;
};

/// Whether the call was answered without an error.
bool Call(LimitedOperations& operations, GDBusConnection* bus, const Method& method, GVariant* arguments)
{
    constexpr int noOwnTimeout = std::numeric_limits<int>::max();
    const Handle<GAsyncResult> result = operations.Run([&](GCancellable* cancellable,
                                                           GAsyncReadyCallback callback, gpointer data) {
        g_dbus_connection_call(bus, method.service, method.path, method.service, method.name, arguments,
                               nullptr, G_DBUS_CALL_FLAGS_NONE, noOwnTimeout, cancellable, callback, data);
    });
    const Handle<GVariant> answer(g_dbus_connection_call_finish(bus, result.get(), nullptr));
    return answer != nullptr;
}

bool SayHello(LimitedOperations& operations, GDBusConnection* bus)
{
    const Method hello = {"org.freedesktop.DBus", "/org/freedesktop/DBus", "Hello"};
    return Call(operations, bus, hello, nullptr);
}

bool ShowItem(LimitedOperations& operations, GDBusConnection* bus, const QByteArray& uri)
{
    const Method showItems = {"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1", "ShowItems"};
    const char* const uris[] = {uri.constData(), nullptr};
    const char* const startupId = "";
    return Call(operations, bus, showItems, g_variant_new("(^ass)", uris, startupId));
}

} // namespace

bool RevealFile(const QUrl& entry, std::chrono::milliseconds limit)
{
    LimitedOperations operations(limit);
    Handle<GDBusConnection> bus = Connect(operations);
    if (!bus)
        return false;
    const bool revealed =
        SayHello(operations, bus.get()) && ShowItem(operations, bus.get(), entry.toEncoded());
    operations.Release(std::move(bus));
    return revealed;
}

} // namespace Zendra::Util

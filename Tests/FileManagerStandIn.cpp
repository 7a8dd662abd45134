// A file browser that shows nothing: serves org.freedesktop.FileManager1 on the session bus, records each
// request, and then behaves as its argument says.
//
//     FileManagerStandIn answers|refuses|keeps-silent|dies|kills-the-bus RECORD
//
// Each request is one line in the file RECORD. It prints "ready" when the service can be found. A browser
// that the bus has started ends with the bus.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <gio/gio.h>
#include <signal.h>
#include <sys/types.h>

namespace {

const char* const description = R"(<node>
  <interface name="org.freedesktop.FileManager1">
    <method name="ShowItems">
      <arg type="as" name="URIs" direction="in"/>
      <arg type="s" name="StartupId" direction="in"/>
    </method>
  </interface>
</node>)";

struct StandIn
{
    std::string behaviour;
    std::ofstream record;
};

std::string RequestLine(GVariant* parameters)
{
    const char** uris = nullptr;
    const char* startupId = nullptr;
    g_variant_get(parameters, "(^a&s&s)", &uris, &startupId);
    std::string line = "ShowItems [";
    for (const char** uri = uris; *uri; ++uri)
        line += (uri == uris ? "" : " ") + std::string(*uri);
    g_free(uris);
    return line + "] [" + startupId + "]";
}

void KillTheBus(GDBusConnection* bus)
{
    GVariant* reply = g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetConnectionUnixProcessID", g_variant_new("(s)", "org.freedesktop.DBus"), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    guint32 process = 0;
    g_variant_get(reply, "(u)", &process);
    ::kill(static_cast<pid_t>(process), SIGKILL);
    g_variant_unref(reply);
}

void OnMethodCall(GDBusConnection* bus, const gchar* /*sender*/, const gchar* /*path*/,
                  const gchar* /*interface*/, const gchar* /*method*/, GVariant* parameters,
                  GDBusMethodInvocation* invocation, gpointer data)
{
    auto& standIn = *static_cast<StandIn*>(data);
    standIn.record << RequestLine(parameters) << std::endl;

    if (standIn.behaviour == "refuses")
        g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                      "not today");
    else if (standIn.behaviour == "dies")
        ::raise(SIGKILL);
    else if (standIn.behaviour == "kills-the-bus")
        KillTheBus(bus);
    else if (standIn.behaviour != "keeps-silent")
        g_dbus_method_invocation_return_value(invocation, nullptr);
}

void OnNameAcquired(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer /*data*/)
{
    std::puts("ready");
    std::fflush(stdout);
}

/// There is no bus, or another browser has the name.
void OnNameLost(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer /*data*/)
{
    std::exit(1);
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;
    StandIn standIn{argv[1], std::ofstream(argv[2], std::ios::app)};
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (!bus || !standIn.record)
        return 1;

    // The object first, so that a client that finds the name finds the object.
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
    GDBusInterfaceVTable functions = {};
    functions.method_call = &OnMethodCall;
    g_dbus_connection_register_object(bus, "/org/freedesktop/FileManager1", node->interfaces[0], &functions,
                                      &standIn, nullptr, nullptr);
    g_bus_own_name_on_connection(bus, "org.freedesktop.FileManager1", G_BUS_NAME_OWNER_FLAGS_NONE,
                                 &OnNameAcquired, &OnNameLost, nullptr, nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

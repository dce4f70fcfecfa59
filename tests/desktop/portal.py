"""The desktop portal's settings, as far as a test needs them, on the session bus."""

import threading

from gi.repository import Gio, GLib

PATH = "/org/freedesktop/portal/desktop"
INTERFACE = "org.freedesktop.portal.Settings"
SCHEME = ("org.freedesktop.appearance", "color-scheme")
DARK, LIGHT = 1, 2
DESCRIPTION = f"""
<node><interface name="{INTERFACE}">
  <method name="Read">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""


class Portal:
    """A portal that knows only the colour scheme. It answers until `remove`."""

    def __init__(self, scheme):
        self._scheme = scheme
        self._context = GLib.MainContext()
        self._loop = GLib.MainLoop(self._context)
        self._owned = threading.Event()
        self._thread = threading.Thread(target=self._serve)
        self._thread.start()
        assert self._owned.wait(5), "the portal's name"

    def _serve(self):
        self._context.push_thread_default()
        address = Gio.dbus_address_get_for_bus_sync(Gio.BusType.SESSION)
        flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
                 Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        self._bus = Gio.DBusConnection.new_for_address_sync(address, flags)
        interface = Gio.DBusNodeInfo.new_for_xml(DESCRIPTION).interfaces[0]
        self._bus.register_object(PATH, interface, self._answer, None, None)
        Gio.bus_own_name_on_connection(self._bus, "org.freedesktop.portal.Desktop",
                                       Gio.BusNameOwnerFlags.REPLACE,
                                       lambda *_: self._owned.set(), None)
        self._loop.run()
        self._bus.close_sync()

    def _answer(self, _bus, _sender, _path, _interface, _method, key, call):
        if key.unpack() == SCHEME:
            value = GLib.Variant("v", GLib.Variant("u", self._scheme))
            call.return_value(GLib.Variant("(v)", (value,)))
        else:
            call.return_dbus_error("org.freedesktop.portal.Error.NotFound", "not known")

    def change(self, scheme):
        """The user chooses another scheme."""
        self._scheme = scheme
        change = GLib.Variant("(ssv)", (*SCHEME, GLib.Variant("u", scheme)))
        self._bus.emit_signal(None, PATH, INTERFACE, "SettingChanged", change)

    def remove(self):
        self._context.invoke_full(GLib.PRIORITY_DEFAULT, self._loop.quit)
        self._thread.join()

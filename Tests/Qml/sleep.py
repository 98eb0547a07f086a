"""Lets the real application hear of sleep and of waking, and reads its record of events.

`sleep.py QUILLMERE`, under a display and a session bus of its own, where this is the login manager.
"""

import collections
import json
import os
import subprocess
import sys
import time

from gi.repository import Gio, GLib

PATIENCE = 60  # seconds
LOGIN = "org.freedesktop.login1"


def events():
    path = os.path.expanduser("~/.local/state/quillmere/events.jsonl")
    lines = open(path).readlines() if os.path.exists(path) else []
    return collections.Counter(json.loads(line)["event"] for line in lines if line.endswith("\n"))


def until(name, count, doing=lambda: None):
    end = time.monotonic() + PATIENCE
    while events()[name] < count:
        if time.monotonic() > end:
            sys.exit(f"never came: {name}, {count} times; {events()}")
        doing()
        time.sleep(0.2)


os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = os.environ["DBUS_SESSION_BUS_ADDRESS"]
bus = Gio.bus_get_sync(Gio.BusType.SYSTEM)
bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
              GLib.Variant("(su)", (LOGIN, 0)), None, Gio.DBusCallFlags.NONE, -1)


def tell(begins):
    bus.emit_signal(None, "/org/freedesktop/login1", f"{LOGIN}.Manager", "PrepareForSleep",
                    GLib.Variant("(b)", (begins,)))
    bus.flush_sync()


# Where no window manager makes a window the active one.
os.environ["QT_QPA_PLATFORM"] = "offscreen"
process = subprocess.Popen([sys.argv[1]])
try:
    until("AppBecomeActive", 1)
    # More than once, as it may not listen yet.
    until("AppGoBackground", 1, lambda: tell(True))
    until("AppBecomeActive", 2, lambda: tell(False))
finally:
    process.kill()
    process.wait()

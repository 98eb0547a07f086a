"""Goes through the real application as a screen reader does, over AT-SPI alone.

`accessibility.py QUILLMERE`, under a display and a session bus of its own. Fails where a control of
a screen has no name or no role, or can't be used without a pointer.
"""

import os
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 60  # seconds
CONTROLS = {
    Atspi.Role.PUSH_BUTTON, Atspi.Role.CHECK_BOX, Atspi.Role.RADIO_BUTTON, Atspi.Role.SLIDER,
    Atspi.Role.TOGGLE_BUTTON, Atspi.Role.TEXT, Atspi.Role.ENTRY, Atspi.Role.LIST_ITEM,
    Atspi.Role.LIST, Atspi.Role.PROGRESS_BAR, Atspi.Role.DIALOG, Atspi.Role.GROUPING,
    Atspi.Role.IMAGE, Atspi.Role.ANIMATION, Atspi.Role.HEADING, Atspi.Role.LABEL,
}


class Item:
    """A node as it was when it was read: what the application does meanwhile changes nothing."""

    def __init__(self, node):
        states = node.get_state_set()
        self.node = node
        self.name = node.get_name()
        self.role = node.get_role()
        self.role_name = node.get_role_name()
        self.enabled = states.contains(Atspi.StateType.ENABLED)
        self.takes_keys = states.contains(Atspi.StateType.FOCUSABLE)
        self.is_control = self.role in CONTROLS


def items(node):
    """What is on the screen, from `node` down."""
    yield Item(node)
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child and child.get_state_set().contains(Atspi.StateType.SHOWING):
            yield from items(child)


def until(what, found):
    """`what` may be a text, or tell at the end what was missing."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        try:
            result = found()
            if result:
                return result
        except GLib.Error:
            pass  # a node that has gone meanwhile
        time.sleep(0.2)
    sys.exit(f"never came: {what() if callable(what) else what}")


class Application:
    def __init__(self, process):
        self.process = process

    def tree(self):
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            node = desktop.get_child_at_index(index)
            if node and node.get_process_id() == self.process:
                return list(items(node))
        return []

    def press(self, name):
        until(f"{name}, which can be pressed", lambda: self.has_pressed(name))

    def has_pressed(self, name):
        for item in reversed(self.tree()):
            if item.name != name or not item.is_control or not item.enabled:
                continue
            for index in range(item.node.get_n_actions()):
                if item.node.get_action_name(index) in ("Press", "Toggle"):
                    return item.node.do_action(index)
        return False

    def check(self, screen, expected):
        """`expected` names controls that have to be there. What is wrong only while a screen comes
        or goes is no fault."""
        fault = None

        def is_sound():
            nonlocal fault
            tree = self.tree()
            fault = self.fault(tree, expected)
            return tree if fault is None else None

        tree = until(lambda: f"a sound screen: {screen}, {fault}", is_sound)
        print(f"{screen}: {sum(item.is_control for item in tree)} controls")

    @staticmethod
    def fault(tree, expected):
        usable = {item.name for item in tree if item.is_control and item.enabled}
        for name in expected:
            if name not in usable:
                return f"no {name!r}"
        before = ""
        for item in tree:
            # A scroll bar is the pointer's: what the keyboard leads to scrolls into view.
            is_judged = item.role not in (Atspi.Role.FRAME, Atspi.Role.SCROLL_BAR)
            if is_judged and (item.is_control or item.takes_keys):
                what = f"a {item.role_name} after {before!r}"
                if not item.name:
                    return f"{what} has no name"
                if not item.is_control:
                    return f"{what}, {item.name!r}, takes keys, but is no control"
            before = item.name or before
        return None


def main():
    # A call that gives up may have been heard all the same, and would be made twice.
    Atspi.set_timeout(PATIENCE * 1000, PATIENCE * 1000)
    # The registry has to be there before the application looks for it.
    until("the registry", lambda: Atspi.get_desktop(0).get_child_count() >= 0)
    process = subprocess.Popen([sys.argv[1]])
    try:
        app = Application(process.pid)
        app.check("home", ["Photo", "Drawing", "Choose from Library", "Crop First", "Settings"])
        app.press("Settings")
        app.check("settings", ["1024px", "2048px", "Write a Mail", "Close"])
        app.press("Ask or Report a Problem")
        app.check("inquiry", ["Back", "Your Question"])
        app.press("Back")
        app.press("Close")
        app.press("Photo")
        app.press("Fast Drawing")
        app.check("detail", ["Divider between source and result", "Save", "Format of Saved Pictures"])
        until("the result", lambda: any(
            item.name == "From 451 x 300 to 1804 x 1200" for item in app.tree()))
        app.press("Format of Saved Pictures")
        app.check("format", ["HEIC", "Keep the Date", "Done"])
        app.press("Done")
        app.press("Save")
        app.check("share", ["Share the Picture", "Converted picture", "Tell a Friend"])
        app.press("Share the Picture")
        app.check("share sheet", ["Copy", "Save As…", "Cancel"])
    finally:
        process.kill()
        process.wait()


main()

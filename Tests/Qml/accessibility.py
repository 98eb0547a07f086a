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


def nodes(node):
    """What is on the screen, from `node` down."""
    yield node
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child and child.get_state_set().contains(Atspi.StateType.SHOWING):
            yield from nodes(child)


def until(what, found):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        try:
            result = found()
            if result:
                return result
        except GLib.Error:
            pass  # a node that has gone meanwhile
        time.sleep(0.2)
    sys.exit(f"never came: {what}")


class Application:
    def __init__(self, process):
        self.process = process

    def tree(self):
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            node = desktop.get_child_at_index(index)
            if node and node.get_process_id() == self.process:
                return list(nodes(node))
        return []

    def usable(self, name, acts=False):
        """The control of this name that the user may use now, or else press."""
        for node in reversed(self.tree()):
            states = node.get_state_set()
            if node.get_name() == name and node.get_role() in CONTROLS and states.contains(
                    Atspi.StateType.ENABLED) and (not acts or node.get_n_actions() > 0):
                return node
        return None

    def press(self, name):
        node = until(name, lambda: self.usable(name, acts=True))
        for index in range(node.get_n_actions()):
            if node.get_action_name(index) in ("Press", "Toggle"):
                return node.do_action(index)
        sys.exit(f"can't be pressed: {name}")

    def check(self, screen, expected):
        """`expected` names controls that have to be there."""
        for name in expected:
            until(f"{name} on {screen}", lambda: self.usable(name))
        controls = 0
        for node in self.tree():
            role = node.get_role()
            takes_keys = node.get_state_set().contains(Atspi.StateType.FOCUSABLE)
            # A scroll bar is the pointer's: what the keyboard leads to scrolls into view.
            if role in (Atspi.Role.FRAME, Atspi.Role.SCROLL_BAR):
                continue
            if role not in CONTROLS and not takes_keys:
                continue
            controls += 1
            what = f"{screen}: a {node.get_role_name()} after {self.before(node)!r}"
            if not node.get_name():
                sys.exit(f"{what} has no name")
            if role not in CONTROLS:
                sys.exit(f"{what}, {node.get_name()!r}, takes keys, but is no control")
        print(f"{screen}: {controls} controls")

    def before(self, node):
        names = [other.get_name() for other in self.tree()[:self.tree().index(node)]]
        return next((name for name in reversed(names) if name), "")


def main():
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
            node.get_name() == "From 451 x 300 to 1804 x 1200" for node in app.tree()))
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

"""What a screen reader finds in the window of fxbox-desk, over the bus that they use:

    dbus-run-session -- python3 accessible-test.py DESK

Needs a display. Writes a picture and its chain into the current folder.
"""

import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

CHAIN = """ZNFilter.Sepia.1(Sepia=050)
//off ZNFilter.Invert.1(Inversity=100)
ZNFilter.Emboss.1(EmbossStrength=020)
"""


def below(node):
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield child
            yield from below(child)


def find(node, role, name):
    for child in below(node):
        if child.get_role_name() == role and child.get_name() == name:
            return child
    return None


def application(name):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        child = desktop.get_child_at_index(index)
        if child is not None and child.get_name() == name:
            return child
    return None


def awaited(look, what):
    end = time.monotonic() + 30
    while time.monotonic() < end:
        try:
            found = look()
        except GLib.Error:  # something has just gone
            found = None
        if found:
            return found
        time.sleep(0.2)
    sys.exit(f"not found: {what}")


def rows(chain):
    found = []
    for index in range(chain.get_child_count()):
        row = chain.get_child_at_index(index)
        states = row.get_state_set()
        found.append((row.get_name(), row.get_role_name(), states.contains(Atspi.StateType.CHECKED)))
    return found


def check(wanted):
    window = awaited(lambda: application("fxbox-desk"), "the program")
    chain = awaited(lambda: find(window, "list", "Chain"), "the chain")
    awaited(lambda: rows(chain) == wanted, f"the rows {wanted}")
    filters = awaited(lambda: find(window, "list", "Filters"), "the filters")
    names = [row[0] for row in rows(filters)]
    for name in ("Light and tone", "Sepia tone", "Gaussian blur"):
        if name not in names:
            sys.exit(f"not among the filters: {name}")
    for role, name in (("push button", "Open"), ("push button", "Split"), ("image", "Picture")):
        awaited(lambda: find(window, role, name), f"{role} {name}")
    told = ("push button", "check box", "slider", "text", "list", "list item", "image")
    awaited(lambda: all(node.get_name() or node.get_role_name() not in told for node in below(window)),
            "names of all controls")


def main():
    with open("photo.ppm", "wb") as picture:
        picture.write(b"P6\n8 8\n255\n" + bytes(range(192)))
    with open("photo.chain", "w", encoding="utf-8") as chain:
        chain.write(CHAIN)
    Atspi.get_desktop(0).get_child_count()  # the registry is there before the program asks for it
    time.sleep(0.5)
    desk = subprocess.Popen([sys.argv[1], "photo.ppm"])
    try:
        check(
            [
                ("Sepia tone, Sepia 50", "check box", True),
                ("Negative, Inversity 100", "check box", False),
                ("Emboss, EmbossStrength 20", "check box", True),
            ],
        )
    finally:
        desk.kill()


if __name__ == "__main__":
    main()

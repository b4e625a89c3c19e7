"""What a screen reader finds in the window of fxbox-desk, over the bus that they use:

    dbus-run-session -- python3 accessible-test.py DESK PICTURE

Needs a display. PICTURE has a chain of three filters beside it, of which the second is switched off.
"""

import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


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
        found = look()
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


def check(desk, wanted):
    window = awaited(lambda: application("fxbox-desk"), "the program")
    chain = awaited(lambda: find(window, "list", "Chain"), "the chain")
    got = awaited(lambda: rows(chain) if len(rows(chain)) == len(wanted) else None, "its rows")
    if got != wanted:
        sys.exit(f"other rows: {got}")
    filters = awaited(lambda: find(window, "list", "Filters"), "the filters")
    names = [row[0] for row in rows(filters)]
    for name in ("Light and tone", "Sepia tone", "Gaussian blur"):
        if name not in names:
            sys.exit(f"not among the filters: {name}")
    for role, name in (("push button", "Open"), ("toggle button", "Split"), ("text", "Search for filters")):
        awaited(lambda: find(window, role, name), f"{role} {name}")
    nameless = [
        node.get_role_name()
        for node in below(window)
        if node.get_role_name() in ("push button", "toggle button", "check box", "slider", "text", "list", "image")
        and not node.get_name()
    ]
    print("without a name:", nameless)


def main():
    desk = subprocess.Popen(sys.argv[1:], stdout=subprocess.DEVNULL)
    try:
        check(
            desk,
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

#!/usr/bin/env python3
"""Walks the program through its accessible tree, as a screen reader does.

    atspi_walk.py PROGRAM

Every control has to be found by role and name, every command that is not greyed is pressed once,
in the soft key's menu and in the list's pop-up, and each has to do what it says. Runs on a display
and a session bus of its own. Ends with 77 when what that takes is not installed.
"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
BUS_SERVICE = "/usr/share/dbus-1/services/org.a11y.Bus.service"
PATIENCE = 20.0
ENTRIES = 180  # of the sample card
KEY_ESCAPE = 0xFF1B
KEY_DOWN = 0xFF54
KEY_RETURN = 0xFF0D
SETTINGS = """KELPIN REGISTRY 1
[HKEY_LOCAL_MACHINE\\Software\\OEM\\KELPIN]
"Enable_SDN"=dword:00000001
"Enable_AAS"=dword:00000001
"Enable_GAS"=dword:00000001
"Enable_Move_Func"=dword:00000001
"Mobile_Tel_Flag"=dword:00000001
"""
NAMED = {"push button", "table", "text", "password text", "check box", "progress bar"}
DELETE_QUESTION = ("The selected items will be permanently deleted from the SIM card.\n"
                   "Continue?")


def skip(why):
    print(f"skipped: {why}")
    sys.exit(SKIPPED)


def python_with_pyatspi():
    """The interpreter that the distribution's module belongs to; None when there is none."""
    for python in (sys.executable, "/usr/bin/python3"):
        found = subprocess.run([python, "-c", "import pyatspi"], capture_output=True, check=False)
        if found.returncode == 0:
            return python
    return None


def start_display(log):
    """An X server that picks its own number. Returns the process and the name of the display."""
    read, write = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write), "-screen", "0", "800x1280x24", "-nolisten", "tcp",
         "-noreset"],
        pass_fds=[write], stdout=log, stderr=log)
    os.close(write)
    with os.fdopen(read) as pipe:
        number = pipe.readline().strip()
    if not number:
        server.wait()
        sys.exit("the X server did not start")
    return server, f":{number}"


def outside(program):
    """Makes the display, the folders and the bus, and runs the walk there."""
    for tool in ("Xvfb", "dbus-run-session"):
        if shutil.which(tool) is None:
            skip(f"{tool} is not installed")
    if not os.path.exists(BUS_SERVICE):
        skip("at-spi2-core is not installed")
    python = python_with_pyatspi()
    if python is None:
        skip("python3-pyatspi is not installed")
    with tempfile.TemporaryDirectory() as home:
        environment = dict(os.environ)
        for name in ("WAYLAND_DISPLAY", "AT_SPI_BUS_ADDRESS", "DBUS_SESSION_BUS_ADDRESS"):
            environment.pop(name, None)
        for name in ("XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
                     "XDG_CACHE_HOME"):
            environment[name] = os.path.join(home, name)
            os.mkdir(environment[name], 0o700)
        environment.update(HOME=home, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
                           GSETTINGS_BACKEND="memory", KELPIN_THEME="light",
                           LC_ALL="C.UTF-8", LANGUAGE="")
        with open(os.path.join(home, "log"), "w+") as log:
            server, environment["DISPLAY"] = start_display(log)
            try:
                walk = subprocess.run(
                    ["dbus-run-session", "--", python, os.path.abspath(__file__), "--inside",
                     os.path.abspath(program)], env=environment, stderr=log, check=False)
            finally:
                server.terminate()
                server.wait()
            if walk.returncode != 0:
                log.seek(0)
                sys.stdout.write(log.read())
            sys.exit(walk.returncode)


class Failed(Exception):
    """What was expected did not come."""


class Walk:
    """The program, seen through its accessible tree alone."""

    def __init__(self, pyatspi, process):
        self.pyatspi = pyatspi
        self.process = process
        self.application = None

    # Looking.

    def until(self, what, look):
        """What `look` finds, as soon as it finds something."""
        end = time.monotonic() + PATIENCE
        while True:
            if self.process.poll() is not None:
                raise Failed(f"the program ended with {self.process.returncode}; waited for {what}")
            try:
                found = look()
            except (LookupError, RuntimeError, NotImplementedError, AttributeError):
                found = None  # it went away while it was looked at
            except Exception as error:  # pylint: disable=broad-except
                if type(error).__name__ not in ("Error", "GError"):
                    raise
                found = None
            if found:
                return found
            if time.monotonic() > end:
                raise Failed(f"no {what}")
            time.sleep(0.03)

    def children(self, node):
        return [child for child in (node.getChildAtIndex(i) for i in range(node.childCount))
                if child is not None]

    def all(self, node):
        """Everything below `node`, but for what is in a table."""
        for child in self.children(node):
            yield child
            if child.getRoleName() != "table":
                yield from self.all(child)

    def find(self, role, name=None, below=None):
        for node in self.all(below or self.application):
            if node.getRoleName() == role and (name is None or node.name == name):
                return node
        return None

    def wait_for(self, role, name=None, below=None):
        wanted = role if name is None else f'{role} "{name}"'
        return self.until(wanted, lambda: self.find(role, name, below))

    def has(self, node, state):
        return node.getState().contains(getattr(self.pyatspi, "STATE_" + state))

    def table(self):
        return self.wait_for("table")

    def rows(self):
        return self.table().queryTable().nRows

    def selected(self):
        return len(self.table().queryTable().getSelectedRows())

    # Doing.

    def press(self, node):
        actions = node.queryAction()
        names = [actions.getName(i) for i in range(actions.nActions)]
        if "Press" not in names:
            raise Failed(f'"{node.name}" cannot be pressed, only {names}')
        actions.doAction(names.index("Press"))

    def key(self, symbol):
        self.pyatspi.Registry.generateKeyboardEvent(symbol, None, self.pyatspi.KEY_SYM)

    def select_row(self, row):
        table = self.table().queryTable()
        for other in list(table.getSelectedRows()):
            if other != row:
                table.removeRowSelection(other)
        table.addRowSelection(row)
        self.until("a row that is selected alone", lambda: self.selected() == 1)

    def main_items(self):
        """The items of the Menu key, sub-menus included, by name."""
        items = {}
        menu = self.wait_for("popup menu", below=self.wait_for("push button", "Menu"))
        for node in self.all(menu):
            if node.getRoleName() == "menu item" and node.name:
                items[node.name] = node
        return items

    def item(self, name):
        found = self.until(f'item "{name}"', lambda: self.main_items().get(name))
        self.until(f'"{name}" not greyed', lambda: self.has(found, "ENABLED"))
        return found

    def answer(self, caption, text, button):
        """Answers the box that is open."""
        box = self.wait_for("alert", caption)
        self.wait_for("label", text, box)
        self.press(self.wait_for("push button", button, box))
        self.until("the box gone", lambda: self.find("alert", caption) is None)

    # The walk itself.

    def start(self):
        desktop = self.pyatspi.Registry.getDesktop(0)
        self.application = self.until(
            "application", lambda: next((child for child in self.children(desktop)
                                         if child.name.lower() == "kelpin"), None))
        self.until("every entry", lambda: self.rows() == ENTRIES)
        self.until("the first row selected", lambda: self.selected() == 1)

    def check_names(self):
        """Whatever can be pressed, typed into or read has a name."""
        wanted = {"push button", "menu item", "table", "text", "check box", "label"}
        seen = set()
        for node in self.all(self.application):
            role = node.getRoleName()
            seen.add(role)
            if role in wanted and not node.name:
                raise Failed(f"a {role} without a name")
        if not {"table", "push button", "popup menu"} <= seen:
            raise Failed(f"the window has only {sorted(seen)}")
        table = self.table()
        if not table.name.startswith("My No."):
            raise Failed(f'the list is called "{table.name}"')
        rows = table.queryTable()
        names = [rows.getColumnDescription(column) for column in range(rows.nColumns)]
        if names != ["#", "Name", "Phone"]:
            raise Failed(f"the columns are called {names}")
        # By name, so the one without a name comes first.
        for row, texts in ((0, ["121", "", "+493023125999"]), (1, ["122", "1", "1"])):
            read = [rows.getAccessibleAt(row, column).name for column in range(3)]
            if read != texts:
                raise Failed(f"row {row} reads {read}")

    def press_commands(self):
        """Every command that is not greyed, once: the left key and each item of the Menu key."""
        enabled = {name for name, node in self.main_items().items()
                   if self.has(node, "ENABLED") and node.childCount == 0}
        known = {
            "Edit...": lambda: self.in_dialog("Edit...", ("text", "Phone Number"), "Cancel"),
            "Call...": lambda: self.in_dialog("Call...", ("table", "Call"), "Cancel"),
            "Send...": lambda: self.in_dialog("Send...", ("table", "Send to"), "Cancel"),
            "Delete Contacts...": lambda: self.in_dialog(
                "Delete Contacts...", ("table", "Contacts to delete"), "Menu", "Cancel"),
            "Contacts to SIM...": lambda: self.in_dialog(
                "Contacts to SIM...", ("menu item", "Check All"), "Menu", "Cancel"),
            "Move Contacts to SIM...": lambda: self.in_dialog(
                "Move Contacts to SIM...", ("menu item", "Check All"), "Menu", "Cancel"),
            "Phone No. Name...": lambda: self.in_dialog(
                "Phone No. Name...", ("table", None), None),
            "Group Name...": lambda: self.in_dialog("Group Name...", ("table", None), None),
            "Service Dialing Numbers...": lambda: self.in_dialog(
                "Service Dialing Numbers...", ("table", None), None),
            "List of Own Numbers...": lambda: self.in_dialog(
                "List of Own Numbers...", ("table", "Store your personal numbers."), None),
            "SIM Information...": lambda: self.in_dialog(
                "SIM Information...", ("table", "SIM Information"), "OK"),
            "Options...": lambda: self.in_dialog(
                "Options...", ("table", "Contacts to SIM"), "OK"),
            "About...": lambda: self.in_dialog("About...", ("label", "Version 6.80"), "Done"),
            "Save to Contacts": self.save_to_contacts,
            "Select All": self.select_all,
            "Refresh": self.refresh,
            "Delete": self.delete,
            "Move to Contacts": self.move_to_contacts,
        }
        print("enabled:", ", ".join(sorted(enabled)))
        if enabled != set(known):
            raise Failed(f"only one side knows {sorted(enabled ^ set(known))}: teach this walk")
        print("pressing New")
        self.in_dialog(None, ("text", "Phone Number"), "Cancel")
        self.select_row(5)  # one with several numbers
        for name, check in known.items():
            print("pressing", name)
            check()

    def in_dialog(self, command, mark, *closing):
        """Presses the command (none: the left key) and closes its dialog, known by `mark`.

        `closing` names a button, or a key of the bar and an item of its menu; none is Escape.
        """
        before = len(self.children(self.application))
        rows = self.rows()
        self.press(self.wait_for("push button", "New") if command is None else self.item(command))
        self.until("one window more",
                   lambda: len(self.children(self.application)) == before + 1)
        dialog = self.children(self.application)[-1]
        self.wait_for(*mark, below=dialog)
        self.until(f"name for all under {command}", lambda: all(
            node.name for node in self.all(dialog) if node.getRoleName() in NAMED))
        self.check_controls(dialog)
        button = None if closing[0] is None else self.wait_for("push button", closing[0], dialog)
        if button is None:
            self.key(KEY_ESCAPE)
        elif len(closing) == 1:
            self.until("the button live", lambda: self.has(button, "ENABLED"))
            self.press(button)
        else:
            item = self.wait_for("menu item", closing[1], button)
            self.until("the item live", lambda: self.has(item, "ENABLED"))
            self.press(item)
        self.until(f"the dialog of {command} closed",
                   lambda: len(self.children(self.application)) == before)
        if self.rows() != rows:
            raise Failed(f"{command} was left and changed the list")

    def labels(self, node):
        """The names of what labels `node`."""
        return [relation.getTarget(i).name for relation in node.getRelationSet()
                if relation.getRelationType() == self.pyatspi.RELATION_LABELLED_BY
                for i in range(relation.getNTargets())]

    def check_controls(self, dialog):
        """A field is related to its label, and a list's rows tell their columns and boxes."""
        for node in self.all(dialog):
            role = node.getRoleName()
            if role in ("text", "password text") and \
                    [name.rstrip(":") for name in self.labels(node)] != [node.name]:
                raise Failed(f'the field "{node.name}" has the labels {self.labels(node)}')
            if role == "table":
                self.check_cells(node.queryTable())

    def check_cells(self, table):
        for column in range(table.nColumns):
            if not table.getColumnDescription(column):
                raise Failed(f"column {column} has no name")
        if table.nRows == 0:
            return
        cell = table.getAccessibleAt(0, 0)
        if cell.getRoleName() != "table cell":
            raise Failed(f"a cell is a {cell.getRoleName()}")
        if not self.has(cell, "SELECTABLE"):
            raise Failed("a row cannot be selected")

    def move_to_contacts(self):
        before = self.rows()
        self.select_row(8)
        self.press(self.item("Move to Contacts"))
        self.answer("Info", "Contact(s) successfully added.\n\n - 1 new item(s).\n"
                    " - 0 item(s) overwritten.\n - 0 item(s) already exists.", "OK")
        self.until("one entry less", lambda: self.rows() == before - 1)

    def save_to_contacts(self):
        self.press(self.item("Save to Contacts"))
        self.answer("Info", "Contact(s) successfully added.\n\n - 1 new item(s).\n"
                    " - 0 item(s) overwritten.\n - 0 item(s) already exists.", "OK")

    def select_all(self):
        self.press(self.item("Select All"))
        self.until("all rows selected", lambda: self.selected() == self.rows())

    def refresh(self):
        self.press(self.item("Refresh"))
        self.until("one row selected after the list was read again",
                   lambda: self.rows() == ENTRIES and self.selected() == 1)

    def delete(self):
        before = self.rows()
        self.select_row(3)
        self.press(self.item("Delete"))
        self.answer("Warning", DELETE_QUESTION, "No")
        if self.rows() != before:
            raise Failed("an entry is gone that nobody wanted deleted")
        self.press(self.item("Delete"))
        self.answer("Warning", DELETE_QUESTION, "Yes")
        self.until("one entry less", lambda: self.rows() == before - 1)

    def open_menu(self):
        """The Menu key itself opens its menu, and Escape closes it."""
        key = self.wait_for("push button", "Menu")
        self.press(key)
        menu = self.wait_for("popup menu", below=key)
        self.until("the menu on the screen", lambda: self.has(menu, "SHOWING"))
        self.key(KEY_ESCAPE)
        self.until("the menu closed", lambda: not self.has(menu, "SHOWING"))

    def press_behind_a_dialog(self):
        """What stands behind a dialog is in the tree all the time, and does nothing then."""
        windows = len(self.children(self.application))
        self.select_row(2)
        self.press(self.item("About..."))
        self.until("the dialog",
                   lambda: len(self.children(self.application)) == windows + 1)
        for name in ("Select All", "Delete", "Options...", "Refresh"):
            self.press(self.item(name))
        self.press(self.wait_for("push button", "New"))
        self.press(self.wait_for("push button", "Menu"))
        time.sleep(1.0)  # nothing tells that nothing comes
        if len(self.children(self.application)) != windows + 1:
            raise Failed("a window came up over the dialog")
        if self.selected() != 1:
            raise Failed("the list behind the dialog was changed")
        self.key(KEY_ESCAPE)
        self.until("the dialog closed",
                   lambda: len(self.children(self.application)) == windows)
        self.press(self.item("Select All"))
        self.until("all rows selected", lambda: self.selected() == self.rows())

    def press_popup(self):
        """The list's pop-up: opened by the right button, its second item chosen by key."""
        before = self.rows()
        self.select_row(5)
        cell = self.table().queryTable().getAccessibleAt(5, 1)
        place = cell.queryComponent().getExtents(self.pyatspi.DESKTOP_COORDS)
        self.pyatspi.Registry.generateMouseEvent(
            place.x + place.width // 2, place.y + place.height // 2, "b3c")
        time.sleep(0.5)  # no reader is told where a pop-up stands; give it time to open
        self.key(KEY_DOWN)
        self.key(KEY_DOWN)
        self.key(KEY_RETURN)
        self.answer("Warning", DELETE_QUESTION, "Yes")
        self.until("one entry less", lambda: self.rows() == before - 1)

    def close(self):
        self.process.send_signal(signal.SIGTERM)
        if self.process.wait(PATIENCE) != 0:
            raise Failed(f"the program ended with {self.process.returncode}")


def inside(program):
    import pyatspi  # pylint: disable=import-outside-toplevel,import-error
    settings = os.path.join(os.environ["HOME"], "settings.reg")
    with open(settings, "w", encoding="utf-8") as file:
        file.write(SETTINGS)
    process = subprocess.Popen([program, "--demo", "--registry", settings],
                               stdin=subprocess.DEVNULL)
    try:
        walk = Walk(pyatspi, process)
        for step in (walk.start, walk.check_names, walk.open_menu,
                     walk.press_behind_a_dialog, walk.press_commands, walk.press_popup,
                     walk.close):
            print("-", step.__name__, flush=True)
            step()
        print("the whole program can be walked")
        return 0
    except Failed as failure:
        print("FAILED:", failure)
        return 1
    finally:
        if process.poll() is None:
            process.kill()
            process.wait()


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] == "--inside":
        sys.exit(inside(sys.argv[2]))
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    outside(sys.argv[1])

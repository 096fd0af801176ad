#!/usr/bin/env python3
"""Boxes that open at the same time, on an X display: real keys come to the one in front.

    boxes_on_x.py GUI_TESTS

Runs those tests of the windows with no window manager and, where it is installed, under openbox.
Ends with 77 when what that takes is not installed.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from atspi_walk import skip, start_display  # pylint: disable=wrong-import-position

PATIENCE = 60.0
# Boxes of the screen thread, of workers and of both.
TESTS = ":".join(f"Every/StackedBoxes.*/{askers}_*"
                 for askers in ("s", "w", "ss", "sw", "ws", "ww", "sss", "sws", "www"))


def start_manager(environment, log):
    """Openbox, once it manages the display. Returns the process."""
    manager = subprocess.Popen(["openbox"], env=environment, stdout=log, stderr=log)
    end = time.monotonic() + PATIENCE
    while True:
        told = subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], env=environment,
                              capture_output=True, text=True, check=False)
        if "window id #" in told.stdout:
            return manager
        if manager.poll() is not None or time.monotonic() > end:
            sys.exit("openbox did not start")
        time.sleep(0.05)


def run(program, home, managed):
    environment = dict(os.environ)
    for name in ("WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS"):
        environment.pop(name, None)
    environment.update(HOME=home, XDG_RUNTIME_DIR=home, QT_QPA_PLATFORM="xcb",
                       KELPIN_THEME="light")
    with open(os.path.join(home, "log"), "w+", encoding="utf-8") as log:
        server, environment["DISPLAY"] = start_display(log)
        manager = None
        try:
            manager = start_manager(environment, log) if managed else None
            tests = subprocess.run([program, f"--gtest_filter={TESTS}", "--gtest_brief=1"],
                                   env=environment, check=False)
        finally:
            for process in (manager, server):
                if process is not None:
                    process.terminate()
                    process.wait()
        return tests.returncode


def main(program):
    for tool in ("Xvfb", "xdotool"):
        if shutil.which(tool) is None:
            skip(f"{tool} is not installed")
    managers = [False]
    if shutil.which("openbox") is not None and shutil.which("xprop") is not None:
        managers.append(True)
    for managed in managers:
        print("under openbox" if managed else "without a window manager", flush=True)
        with tempfile.TemporaryDirectory() as home:
            os.chmod(home, 0o700)
            code = run(os.path.abspath(program), home, managed)
        if code != 0:
            sys.exit(code)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])

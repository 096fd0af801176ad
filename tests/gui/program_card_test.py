#!/usr/bin/env python3
"""The program itself on a card that wants its PIN, and on one that does not answer.

    program_card_test.py PROGRAM CARD

CARD is a sample image. Each run has folders of its own. Nothing here is measured: a card that does
not answer takes a minute for each command, which no run waits for.
"""

import json
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time

PATIENCE = 25.0  # seconds; less than one command of the silent card
SILENT = 60000   # milliseconds a command
PIN = "97531864"
WRONG = "86429753"
FAILURES = []


def check(holds, what):
    if not holds:
        FAILURES.append(what)
        print(f"failed: {what}")


def allow_core_files():
    """What the program takes away has to be there first."""
    try:
        resource.setrlimit(resource.RLIMIT_CORE, (4096, 4096))
    except (ValueError, OSError):
        pass


class Home:
    """Folders of one run, and its card."""

    def __init__(self, folder, sample, change):
        self.path = pathlib.Path(folder)
        self.card = self.path / "card.json"
        image = json.loads(pathlib.Path(sample).read_text())
        change(image)
        self.card.write_text(json.dumps(image))
        self.environment = dict(os.environ, HOME=folder, QT_QPA_PLATFORM="offscreen",
                                KELPIN_LOG="stderr", LC_ALL="C.UTF-8", LANGUAGE="")
        for name in ("RUNTIME_DIR", "CONFIG_HOME", "DATA_HOME", "STATE_HOME", "CACHE_HOME"):
            place = self.path / name.lower()
            place.mkdir(mode=0o700)
            self.environment["XDG_" + name] = str(place)
        for name in ("DISPLAY", "WAYLAND_DISPLAY"):
            self.environment.pop(name, None)

    def start(self, program, *arguments, pin=None, through=(), error=subprocess.PIPE):
        """`through` is a command that runs the one behind it; `error` where it tells of errors."""
        command = [*through, program, "--sim", f"soft:{self.card}", *arguments]
        read = None
        if pin is not None:
            read, write = os.pipe()
            os.write(write, (pin + "\n").encode())
            os.close(write)
            command += ["--pin-fd", str(read)]
        process = subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE,
                                   stderr=error, text=True, preexec_fn=allow_core_files,
                                   pass_fds=[] if read is None else [read])
        if read is not None:
            os.close(read)
        return process

    def pin1(self):
        return json.loads(self.card.read_text())["pins"]["pin1"]

    def finds(self, secret):
        """The files in which `secret` stands, but for the card's own."""
        found = []
        for file in self.path.rglob("*"):
            if file.is_file() and file != self.card and secret.encode() in file.read_bytes():
                found.append(str(file.relative_to(self.path)))
        return found


def lock(image, tries=3):
    image["pins"]["pin1"] = {"code": PIN, "puk": "12345678", "enabled": True, "tries": tries}


def finish(process):
    try:
        return process.communicate(timeout=PATIENCE)
    except subprocess.TimeoutExpired:
        process.kill()
        check(False, "the program ended")
        return process.communicate()


def given_pin_opens_the_card(program, sample):
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lock)
        process = home.start(program, "--screenshot", os.path.join(folder, "list.png"), pin=PIN)
        out, error = finish(process)
        check(process.returncode == 0, f"a given PIN opens the card: {error}")
        check("180 entries" in out, "the list of the opened card is printed")
        check(PIN not in out + error, "the PIN is in no output")
        check(home.finds(PIN) == [], f"the PIN is in no file: {home.finds(PIN)}")


def wrong_given_pin_is_sent_once(program, sample):
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lock)
        process = home.start(program, "--screenshot", os.path.join(folder, "list.png"), pin=WRONG)
        _, error = finish(process)
        check(process.returncode == 1, "a wrong PIN fails")
        check(error.count("SIM PIN is required to perform this operation.") == 1,
              f"the message is shown once: {error}")
        check(home.pin1()["tries"] == 2, "one try was spent")
        check(WRONG not in error and home.finds(WRONG) == [], "the wrong PIN is nowhere")


def last_try_is_kept(program, sample):
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lambda image: lock(image, 1))
        process = home.start(program, "--screenshot", os.path.join(folder, "list.png"), pin=PIN)
        finish(process)
        check(process.returncode == 1 and home.pin1()["tries"] == 1, "the last try is kept")


def what_is_no_pin_is_told(program, sample):
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lock)
        process = home.start(program, "--screenshot", os.path.join(folder, "list.png"),
                             pin="123456789")
        _, error = finish(process)
        check("--pin-fd gives no PIN" in error, "what is no PIN is told")
        check(home.pin1()["tries"] == 3, "what is no PIN is not sent")
        process = home.start(program, "--pin-fd", "77")
        _, error = finish(process)
        check(process.returncode == 2 and "77" in error, "a closed descriptor is told")


def memory_is_private_once_a_pin_is_given(program, sample):
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lock)
        process = home.start(program, pin=PIN)
        end = time.monotonic() + PATIENCE
        limits = ""
        before = pathlib.Path(f"/proc/{process.pid}/limits").read_text()
        if "Max core file size        4096 " not in before:
            print("core files cannot be allowed here: only their absence is seen")
        while time.monotonic() < end and "Max core file size        0 " not in limits:
            time.sleep(0.05)
            limits = pathlib.Path(f"/proc/{process.pid}/limits").read_text()
        check("Max core file size        0 " in limits, f"no core file is written: {limits}")
        if os.getuid() != 0:
            while time.monotonic() < end and os.stat(f"/proc/{process.pid}/mem").st_uid != 0:
                time.sleep(0.05)
            check(os.stat(f"/proc/{process.pid}/mem").st_uid == 0, "the memory is private")
        process.send_signal(signal.SIGTERM)
        finish(process)
        check(process.returncode == 0, "the program ends when it is asked to")


def silent_card_does_not_hold_the_end(program, sample):
    """Asked to end at several moments of a start that hangs on the card."""
    for seconds in (0.2, 1.0, 2.0):
        with tempfile.TemporaryDirectory() as folder:
            home = Home(folder, sample, lambda image: image.update(delayMs=SILENT))
            process = home.start(program)
            time.sleep(seconds)
            asked = time.monotonic()
            process.send_signal(signal.SIGTERM)
            _, error = finish(process)
            print(f"ended {time.monotonic() - asked:.2f} s after the request")
            check(process.returncode is not None and process.returncode in (0, -signal.SIGTERM),
                  f"ends with 0: {process.returncode} {error}")


def a_limit_on_file_sizes_is_told(program, sample):
    """As a full disk is; the system would rather end a program that writes more."""
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lambda image: None)
        process = home.start(program, "--screenshot", os.path.join(folder, "list.png"),
                             through=["sh", "-c", 'ulimit -f 16; exec "$0" "$@"'])
        _, error = finish(process)
        check(process.returncode == 1, f"a limit does not kill: {process.returncode}")
        check("contacts.db: " in error, f"the file that cannot be written is named: {error}")


def a_reader_that_goes_ends_nothing(program, sample):
    """Of the log, as of a terminal's that was closed."""
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lambda image: None)
        read, write = os.pipe()
        os.close(read)
        process = home.start(program, "--screenshot", os.path.join(folder, "list.png"), error=write)
        os.close(write)
        out, _ = finish(process)
        check(process.returncode == 0, f"the program goes on: {process.returncode}")
        check("180 entries" in out, "the list is printed")


def a_second_start_says_that_its_command_line_does_not_count(program, sample):
    with tempfile.TemporaryDirectory() as folder:
        home = Home(folder, sample, lambda image: None)
        first = home.start(program)
        run = home.path / "runtime_dir" / "kelpin"
        end = time.monotonic() + PATIENCE
        # Once it can be called to the front, there is a socket of its own.
        while time.monotonic() < end and not (run.exists() and
                                              any(file.is_socket() for file in run.iterdir())):
            time.sleep(0.05)
        second = home.start(program)
        _, error = finish(second)
        check(second.returncode == 0, f"the second start ends well: {second.returncode}")
        check("Kelpin runs already" in error, f"the second start says why it ends: {error}")
        first.send_signal(signal.SIGTERM)
        _, error = finish(first)
        check(first.returncode == 0, f"the first one goes on till its end: {error}")
        check("Kelpin runs already" not in error, "the first one has nothing to say")


def main():
    program, sample = sys.argv[1:]
    for test in (given_pin_opens_the_card, wrong_given_pin_is_sent_once, last_try_is_kept,
                 what_is_no_pin_is_told, memory_is_private_once_a_pin_is_given,
                 silent_card_does_not_hold_the_end, a_limit_on_file_sizes_is_told,
                 a_reader_that_goes_ends_nothing,
                 a_second_start_says_that_its_command_line_does_not_count):
        print(test.__name__)
        test(program, sample)
    sys.exit(1 if FAILURES else 0)


if __name__ == "__main__":
    main()

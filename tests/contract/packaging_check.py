#!/usr/bin/env python3
"""Validates what the package tells a desktop: the desktop entry, the AppStream metainfo and the
manual pages.

Exit code 77 when a tool is not installed; it is named, and what it checks is left out."""

import pathlib
import shutil
import subprocess
import sys

SKIPPED = 77


def checks(folder):
    for file in sorted(folder.glob("*.desktop")):
        yield ["desktop-file-validate", "--warn-kde", str(file)]
    for file in sorted(folder.glob("*.metainfo.xml")):
        yield ["appstreamcli", "validate", "--no-net", str(file)]
    for file in sorted(folder.glob("man/*.1")):
        yield ["groff", "-man", "-ww", "-z", "-Tutf8", str(file)]


def main(folder):
    run = failed = 0
    commands = list(checks(pathlib.Path(folder)))
    if {command[0] for command in commands} != {"desktop-file-validate", "appstreamcli", "groff"}:
        print(f"{folder}: a desktop entry, a metainfo file or a manual page is missing")
        return 1
    for command in commands:
        if shutil.which(command[0]) is None:
            print(f"{command[0]} is not installed")
            continue
        run += 1
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        # The others tell a hint with success, too: nothing they say is let pass.
        said = result.stdout + result.stderr
        if result.returncode != 0 or (command[0] != "appstreamcli" and said.strip()):
            failed += 1
            print(" ".join(command), said, sep="\n")
    return 1 if failed else 0 if run == len(commands) else SKIPPED


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))

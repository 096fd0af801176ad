#!/usr/bin/env python3
"""Validates what the package tells a desktop: the desktop entry and the AppStream metainfo.

Exit code 77 when neither tool is installed; a tool that is missing alone is named and left out."""

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


def main(folder):
    run = failed = 0
    commands = list(checks(pathlib.Path(folder)))
    if {command[0] for command in commands} != {"desktop-file-validate", "appstreamcli"}:
        print(f"{folder}: a desktop entry or a metainfo file is missing")
        return 1
    for command in commands:
        if shutil.which(command[0]) is None:
            print(f"{command[0]} is not installed")
            continue
        run += 1
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        # The one tells a hint with success, too: nothing it says is let pass.
        said = result.stdout + result.stderr
        if result.returncode != 0 or (command[0] == "desktop-file-validate" and said.strip()):
            failed += 1
            print(" ".join(command), said, sep="\n")
    return 1 if failed else 0 if run == len(commands) else SKIPPED


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))

#!/usr/bin/env python3
"""Sends sources through clang's front end, warnings being errors. Arguments: a build folder that is
configured with clang for all sources; how many run at once; a clang build whose sources are left
out, for it has compiled them."""
import concurrent.futures
import json
import pathlib
import shlex
import subprocess
import sys

# Precompiled headers of targets that are not built are not there.
PRECOMPILED = {"-include-pch", "-include"}


def front_end(entry):
    """The entry's command without its output and its precompiled header."""
    words = shlex.split(entry["command"])
    while "ccache" in words[0]:
        words.pop(0)
    result = []
    skip = 0
    for at, word in enumerate(words):
        if skip:
            skip -= 1
        elif word == "-o":
            skip = 1
        elif word == "-Xclang" and words[at + 1] in PRECOMPILED:
            skip = 3  # the option, -Xclang, and the file
        elif word != "-Winvalid-pch":
            result.append(word)
    return result + ["-fsyntax-only"]


def commands_of(build):
    return json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))


def is_compiled(entry):
    words = shlex.split(entry["command"])
    output = pathlib.Path(entry["directory"]) / words[words.index("-o") + 1]
    return output.exists() and output.stat().st_mtime > pathlib.Path(entry["file"]).stat().st_mtime


def check(entry):
    return subprocess.run(front_end(entry), cwd=entry["directory"], check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    compiled = {entry["file"] for entry in commands_of(pathlib.Path(sys.argv[3]))
                if is_compiled(entry)}
    left = [entry for entry in commands_of(build)
            if build not in pathlib.Path(entry["file"]).parents and entry["file"] not in compiled]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(int(sys.argv[2])) as pool:
        for done in pool.map(check, left):
            if done.returncode != 0 or done.stdout:
                failed += 1
                print(done.stdout)
    print(f"clang: {len(left)} sources, {failed} with warnings or errors")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

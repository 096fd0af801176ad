#!/usr/bin/env python3
"""Fails on a source that no target compiles: a test nobody runs. Argument: a build folder."""
import json
import pathlib
import sys


def main():
    build = pathlib.Path(sys.argv[1])
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    compiled = {pathlib.Path(entry["file"]).resolve() for entry in commands}
    root = pathlib.Path(__file__).resolve().parent.parent
    folders = ["ui", "res", "sim", "app", "editor", "views", "contacts", "device", "start", "tools",
               "tests", "bench"]
    sources = [p for folder in folders for p in (root / folder).rglob("*.cpp")]
    sources += list(root.glob("*.cpp"))
    orphans = sorted(p.relative_to(root).as_posix() for p in sources if p not in compiled)
    for orphan in orphans:
        print(f"{orphan}: in no target")
    print(f"targets: {len(sources)} sources, {len(orphans)} in no target")
    return 1 if orphans else 0


if __name__ == "__main__":
    sys.exit(main())

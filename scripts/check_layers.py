#!/usr/bin/env python3
"""Who may include whom. Reads every #include "..." and fails on one that reaches up.

Run from the repository root; prints each breach as file:line and exits 1 when there is any.
"""
import pathlib
import re
import sys

CORE = ["platform", "ui", "res", "sim", "app", "editor", "views", "contacts"]

# Folder of the including file -> folders it may include besides its own.
FOLDERS = {
    "platform": set(),
    "ui": {"platform"},
    "res": {"ui"},
    "sim": {"platform"},
    "app": {"sim", "ui", "res", "platform"},
    "editor": {"app", "sim", "ui", "res", "platform"},
    "views": {"app", "sim", "ui", "res", "platform"},
    "contacts": {"views", "app", "sim", "ui", "res", "platform"},
    "device/card": {"platform"},
    "device/softcard": {"platform", "device/card"},
    "device/pcsc": {"platform", "device/card"},
    "device/modem": {"platform", "device/card"},
    "device/contacts": {"platform"},
    "device/registry": {"platform"},
    "device/kernel": {"platform"},
    "device/desktop": {"platform"},
    "device/calls": {"platform"},
    "device/qt": {"platform", "ui"},
}

# Of device/card the transports may see the port alone.
ONLY = {"device/softcard": {"device/card": {"device/card/card_channel.h"}},
        "device/pcsc": {"device/card": {"device/card/card_channel.h"}},
        "device/modem": {"device/card": {"device/card/card_channel.h"}}}
# res/ takes the types its templates are made of, no more.
ONLY["res"] = {"ui": {"ui/templates.h", "ui/keys.h"}}
# The store's connection knows the ports alone.
FILES = {"contacts/contacts_connection": {"platform"}}

# Within app/ these stand below the others.
APP_LOWER = {"app/app_state", "app/settings", "app/sim_error", "app/main_list",
             "app/edit_context_menu"}
APP_UPPER = {"app/commands.h", "app/watchers.h", "app/main_dialog.h", "app/start_up.h"}

# Headers the core must not name: all but the standard library's, whose names are plain words.
FOREIGN = re.compile(r"^\s*#\s*include\s*<(Q[A-Z]|Qt|[^>]*[./])")

INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]')
QUOTED = re.compile(r'^\s*#\s*include\s*"')

SUFFIXES = {".h", ".hh", ".hpp", ".hxx", ".inc", ".c", ".cc", ".cpp", ".cxx"}
# These stand on everything and are no part of the program.
OUTSIDE = {"tests", "bench", "tools"}


def folder_of(path):
    parts = path.split("/")
    if parts[0] == "device" and len(parts) > 2:
        return "/".join(parts[:2])
    return parts[0] if len(parts) > 1 else ""


def main():
    breaches = []
    roots = CORE + ["device", "start"]
    files = [p for root in roots for p in pathlib.Path(root).rglob("*") if p.suffix in SUFFIXES]
    files += [p for p in pathlib.Path().iterdir() if p.suffix in SUFFIXES]
    for top in sorted(p for p in pathlib.Path().iterdir() if p.is_dir()):
        known = top.name in roots or top.name in OUTSIDE or top.name.startswith((".", "build"))
        known = known or (top / "CMakeCache.txt").exists()
        if not known and any(p.suffix in SUFFIXES for p in top.rglob("*")):
            breaches.append(f"{top}:1: folder {top} has no rule; add one to check_layers.py")
    for path in sorted(files):
        name = path.as_posix()
        home = folder_of(name)
        # These pick the adapters, and include all of the program.
        whole = name == "main.cpp" or home == "start"
        core = (home in CORE or home == "") and not whole
        if home not in FOLDERS and home != "" and not whole:
            breaches.append(f"{name}:1: folder {home} has no rule; add one to check_layers.py")
            continue
        text = path.read_text(encoding="utf-8").replace("\\\n", " ")
        for number, line in enumerate(text.splitlines(), 1):
            if core and FOREIGN.match(line):
                breaches.append(f"{name}:{number}: the core names a foreign header: {line.strip()}")
            match = INCLUDE.match(line)
            if not match:
                continue
            target = match.group(1)
            there = folder_of(target)
            quoted = QUOTED.match(line)
            if not quoted and not pathlib.Path(target).exists():
                continue  # a library's
            if not pathlib.Path(target).exists():
                breaches.append(f"{name}:{number}: no such file from the root: {target}")
            elif there in OUTSIDE:
                breaches.append(f"{name}:{number}: the program may not include {target}")
            elif whole:
                pass
            elif name.rsplit(".", 1)[0] in APP_LOWER and target in APP_UPPER:
                breaches.append(f"{name}:{number}: stands below {target}")
            elif home == "":
                if there.startswith(("device", "start")) or target == "main.cpp":
                    breaches.append(f"{name}:{number}: program may not include {target}")
            elif there == home:
                pass
            elif there not in FILES.get(name.rsplit(".", 1)[0], FOLDERS[home]):
                breaches.append(f"{name}:{number}: {home} may not include {target}")
            elif target not in ONLY.get(home, {}).get(there, {target}):
                breaches.append(f"{name}:{number}: {home} may not include {target} of {there}")
    for breach in breaches:
        print(breach)
    print(f"layers: {len(files)} files, {len(breaches)} breaches")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())

#!/bin/sh
# Fails on a source that clang-format would write otherwise, and names it.
set -eu
cd "$(dirname "$0")/.."
format=clang-format-14
command -v "$format" >/dev/null || format=clang-format
git ls-files -co --exclude-standard -- '*.cpp' '*.h' | xargs "$format" --dry-run -Werror

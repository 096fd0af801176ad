#!/bin/sh
# Pictures of every dialog into docs/screens (or the folder given), drawn without a display.
set -eu
cd "$(dirname "$0")/.."
folder=${1:-docs/screens}
cmake -S . -B build -G Ninja
cmake --build build --target kelpin-screenshots
export QT_QPA_PLATFORM=offscreen KELPIN_THEME="${KELPIN_THEME:-light}" KELPIN_FONT="${KELPIN_FONT:-DejaVu Sans}"
for session in dialogs prompts smartphone; do
  build/kelpin-screenshots . "$folder" "$session" 360 640
done

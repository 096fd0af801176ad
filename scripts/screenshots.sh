#!/bin/sh
# Pictures of every dialog into docs/screens (or the folder given), drawn without a display.
# KELPIN_THEME, KELPIN_FONT and KELPIN_TEXT_SCALE say how they look, KELPIN_SCREENSHOTS what else:
# "--language res/lang/de.txt --platform smartphone".
set -eu
cd "$(dirname "$0")/.."
folder=${1:-docs/screens}
cmake -S . -B build -G Ninja
cmake --build build --target kelpin-screenshots
export QT_QPA_PLATFORM=offscreen KELPIN_THEME="${KELPIN_THEME:-light}" KELPIN_FONT="${KELPIN_FONT:-DejaVu Sans}"
for session in dialogs prompts smartphone; do
  # shellcheck disable=SC2086
  build/kelpin-screenshots ${KELPIN_SCREENSHOTS:-} . "$folder" "$session" \
    "${KELPIN_WIDTH:-360}" "${KELPIN_HEIGHT:-640}"
done

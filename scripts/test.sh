#!/bin/bash
# Every check, in this order: layers, format, the gcc build, the clang builds under the
# sanitizers, the fuzzers, and last every test of the gcc build. Stops at the first failure.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=${JOBS:-$(nproc)}
seconds=${KELPIN_FUZZ_SECONDS:-20}
# Optimised lightly: the sanitizers' runs are what takes the time.
debug=(-DCMAKE_BUILD_TYPE=Debug "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g1")
export CMAKE_CXX_COMPILER_LAUNCHER=ccache
export LC_ALL=C.UTF-8  # texts are expected in English
export CTEST_OUTPUT_ON_FAILURE=1
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1
# The order of locks is judged as well. Every lock tells when it ends (platform/mutex.h), a bare
# std::mutex does not and may be taken for the next one.
export TSAN_OPTIONS=halt_on_error=1:detect_deadlocks=1:second_deadlock_stack=1

# What the sanitizers' builds run; they build that and nothing else.
sanitized='core|fault|sanitized'
programs() { ctest --test-dir "$1" -N -L "$2" | sed -n 's/^ *Test *#[0-9]*: \(.*_\(tests\|fuzz\)\)$/\1/p'; }
step() { printf '\n== %s (%ss)\n' "$*" "$SECONDS"; }

step "layers and format"
python3 scripts/check_layers.py
scripts/check_format.sh

step "gcc build"
cmake -S . -B build -G Ninja
python3 scripts/check_targets.py build
cmake --build build --parallel "$jobs"

step "clang build with address and undefined-behaviour sanitizers, and the fuzzers"
cmake -S . -B build-asan -G Ninja -DCMAKE_CXX_COMPILER=clang++ "${debug[@]}" \
  -DKELPIN_SANITIZE=address,undefined -DKELPIN_FUZZ=ON -DKELPIN_QT=OFF -DKELPIN_BENCH=OFF
mapfile -t targets < <(programs build-asan "$sanitized|fuzz")
cmake --build build-asan --parallel "$jobs" --target "${targets[@]}" kelpin-event
ctest --test-dir build-asan -L "$sanitized" --parallel "$jobs"

step "clang's warnings for everything else"
cmake -S . -B build-clang -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug
scripts/check_clang.py build-clang "$jobs" build-asan

step "clang build with the thread sanitizer"
cmake -S . -B build-tsan -G Ninja -DCMAKE_CXX_COMPILER=clang++ "${debug[@]}" \
  -DKELPIN_SANITIZE=thread -DKELPIN_QT=OFF -DKELPIN_BENCH=OFF
mapfile -t targets < <(programs build-tsan "$sanitized")
cmake --build build-tsan --parallel "$jobs" --target "${targets[@]}" kelpin-event
ctest --test-dir build-tsan -L "$sanitized" --parallel "$jobs"

step "fuzzers, $seconds s each"
scripts/fuzz.sh build-asan "$seconds" "$jobs"

step "every test"
ctest --test-dir build --parallel "$jobs"

# make run    installs what is missing, builds, opens Kelpin on a sample card
# make test   installs what tests need, builds, runs every test
# make bench  prints the figures
# make package builds build/kelpin_VERSION_ARCHITECTURE.deb and checks it
# make screenshots draws every dialog into docs/screens
# make format rewrites the sources as .clang-format says

JOBS ?= $(shell nproc)
LAUNCH := $(if $(shell command -v ccache 2>/dev/null),-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

.PHONY: all run test bench package screenshots format clean

all:
	cmake -S . -B build -G Ninja $(LAUNCH)
	cmake --build build --parallel $(JOBS)

run:
	scripts/install-deps.sh run
	cmake -S . -B build -G Ninja
	cmake --build build --parallel $(JOBS) --target kelpin kelpin-event
	scripts/run.sh

test:
	scripts/install-deps.sh test
	scripts/test.sh

bench:
	scripts/install-deps.sh test
	scripts/bench.sh

package:
	scripts/install-deps.sh package
	scripts/package.sh
	scripts/check_package.sh

screenshots:
	scripts/install-deps.sh run
	scripts/screenshots.sh

format:
	git ls-files -co --exclude-standard -- '*.cpp' '*.h' | xargs clang-format-14 -i

clean:
	rm -rf build build-asan build-clang build-tsan

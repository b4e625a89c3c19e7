# The commands a person types; each installs what it needs first. `make help` lists them.
PREFIX ?= /usr/local
sources = $(shell find . \( -path ./build -o -path ./.git \) -prune -o \
	\( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print)

.NOTPARALLEL:
.PHONY: help demo docs icons test bench bench-peers windows arm64 sanitize fuzz soak format tidy package install clean

help: ## this list
	@sed -n 's/^\([a-z0-9-]*\):.*## /make \1\t/p' Makefile | expand -t 20

demo: ## build the program and apply filters to a photograph, into demo-out/
	@scripts/setup.sh native
	@scripts/build.sh linux fxbox
	@scripts/demo.sh

icons: ## draw the icons and pack them into resources/KvResourceStorage.box
	@scripts/setup.sh native tools
	@scripts/build.sh linux fxbox_pack_resource
	@scripts/icons.sh build/linux/resources/fxbox_pack_resource

test: ## build everything and run all tests: Linux, Windows (with Wine), Linux with sanitizers
	@scripts/setup.sh all
	@scripts/test.sh linux
	@scripts/test.sh windows
	@scripts/test.sh linux-asan

bench: ## a table of speeds; BENCH=REGEX chooses some, FXBOX_THREADS=1,2 the threads
	@scripts/setup.sh native
	@scripts/build.sh linux fxbox_benchmarks
	@build/linux/benchmarks/fxbox_benchmarks $(if $(BENCH),--benchmark_filter='$(BENCH)')

bench-peers: ## the filters beside OpenCV and libvips, into docs/speed.md; THREADS=N (1)
	@scripts/setup.sh native peers
	@scripts/build.sh linux fxbox_peers
	@build/linux/benchmarks/fxbox_peers $(THREADS) | tee build/peers.md
	@sed -n '/^## What bounds/,$$p' docs/speed.md > build/bounds.md
	@(cat build/peers.md && echo && cat build/bounds.md) > docs/speed.md

windows: ## build the DLL and the program for Windows, into build/windows/
	@scripts/setup.sh windows
	@scripts/build.sh windows fxbox4 fxbox

arm64: ## build the filters for 64-bit ARM, with plain kernels alone, into build/arm64/
	@scripts/setup.sh native arm64
	@scripts/build.sh arm64

sanitize: ## run the tests with the address, undefined behaviour and thread sanitizers
	@scripts/setup.sh native tests
	@scripts/test.sh linux-asan
	@scripts/test.sh linux-tsan

fuzz: ## build the fuzz targets, into build/linux-fuzz/
	@scripts/setup.sh native tests
	@scripts/build.sh linux-fuzz fxbox_fuzz

soak: ## long runs: full counts of repeated tests, the thread sanitizer, an hour of the fuzz targets
	@scripts/setup.sh native tests soak windows
	@FXBOX_SOAK=1000 scripts/test.sh linux
	@FXBOX_SOAK=20 scripts/test.sh linux-tsan
	@FXBOX_SOAK=200 scripts/test.sh windows -R toolkit.Window
	@scripts/build.sh linux-fuzz fxbox_fuzz
	@scripts/fuzz.sh 3600
	@$(MAKE) --no-print-directory package
	@tests/packages/debian.sh
	@scripts/with-display.sh tests/packages/windows.sh

docs: ## write docs/filters.md, docs/glossary.md and the sample pictures in docs/samples/
	@scripts/setup.sh native
	@scripts/build.sh linux fxbox
	@scripts/docs.sh

screens: ## write docs/dialogs.md with a picture of every dialog on both systems
	@scripts/setup.sh native tests windows tools
	@scripts/build.sh linux dialogs_on_screen fxbox_gtk
	@scripts/build.sh windows dialogs_on_screen
	@scripts/screens.sh

format: ## format all sources
	@scripts/setup.sh tools
	@clang-format -i $(sources)

tidy: ## check all sources with clang-tidy
	@scripts/setup.sh native tests tools
	@scripts/build.sh linux
	@run-clang-tidy -quiet -p build/linux -extra-arg=-Wno-unknown-warning-option

package: ## build the Debian packages, and zip and installer for Windows, into build/packages/
	@scripts/setup.sh native tests windows package
	@scripts/package-debian.sh
	@scripts/build.sh windows fxbox4 fxbox fxbox-desk
	@scripts/package-windows.sh

install: ## install library, headers and program below PREFIX (/usr/local); DESTDIR stands before it
	@scripts/setup.sh native
	@cmake --preset linux -B build/install -DFXBOX_TESTS=OFF -DFXBOX_BENCHMARKS=OFF \
		-DCMAKE_INSTALL_PREFIX='$(abspath $(PREFIX))'
	@cmake --build build/install
	@cmake --install build/install

clean: ## remove what was built (the libraries for Windows and the Wine prefix stay in ~/.cache)
	rm -rf build demo-out

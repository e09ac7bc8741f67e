# Two entry points: `make run` starts the program, `make test` builds everything and runs the tests.
BUILD      ?= build
BUILD_NOX  ?= build-nox
JOBS       ?= $(shell nproc)
DEMO       ?= $(HOME)/.local/share/quorvane/Demo.qvx

.PHONY: all deps configure build test nox run demo clean bench fuzz

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQV_TESTS=ON >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# The core, qvx and their tests must also build where Qt is absent.
nox: deps
	@cmake -S . -B $(BUILD_NOX) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQV_GUI=OFF -DQV_TESTS=ON >/dev/null
	@cmake --build $(BUILD_NOX) -j $(JOBS)

test: build nox
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

demo: build
	@scripts/run-demo $(BUILD) "$(DEMO)"

run: demo

bench: build
	@$(BUILD)/bench/qv_bench
	@$(BUILD)/bench/qv_import_bench
	@if [ -x $(BUILD)/bench/qv_gui_bench ]; then $(BUILD)/bench/qv_gui_bench; fi
	@bench/db_bench.sh $(BUILD)

# Ten minutes of a fuzzer (clang with libFuzzer and the sanitizers): the document loader,
# or FUZZ=timewarrior, ical or csv for an import reader.
FUZZ ?= load
fuzz: deps
	@fuzz/run.sh 600 build-fuzz $(FUZZ)

clean:
	rm -rf $(BUILD) $(BUILD_NOX)

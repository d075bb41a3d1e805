# Front door for people and CI: `make test`, `make demo`, `make bench`.
BUILD_DIR ?= build
BUILD_TYPE ?= Release
JOBS ?= $(shell nproc)

.PHONY: all deps configure build test bench demo clean format

all: build

deps:
	@scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) > $(BUILD_DIR).configure.log 2>&1 \
		|| (cat $(BUILD_DIR).configure.log; exit 1)

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

bench: build
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target benchmarks
	@for b in $(BUILD_DIR)/bench/bench_*; do echo "== $$b"; $$b || exit 1; done

demo: build
	@$(BUILD_DIR)/cli/keepcut demo -o demo-out

clean:
	@rm -rf $(BUILD_DIR) $(BUILD_DIR).configure.log

format:
	@git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format -i

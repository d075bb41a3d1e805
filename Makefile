# Front door for people and CI: `make test`, `make demo`, `make bench`,
# `make sanitize` (every test under the address and undefined-behaviour checkers).
BUILD_DIR ?= build
BUILD_TYPE ?= Release
JOBS ?= $(shell nproc)

.PHONY: all deps configure build test bench demo clean format sanitize

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

# A separate instrumented build: out-of-bounds access, leaks and undefined
# behaviour in our code fail the test that hit them.
SANITIZE_DIR ?= build-asan
SANITIZE_FLAGS = -fsanitize=address,undefined -fno-omit-frame-pointer
sanitize: deps
	@cmake -S . -B $(SANITIZE_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DCMAKE_C_FLAGS="$(SANITIZE_FLAGS)" -DCMAKE_CXX_FLAGS="$(SANITIZE_FLAGS)" \
		-DCMAKE_EXE_LINKER_FLAGS="$(SANITIZE_FLAGS)" -DCMAKE_SHARED_LINKER_FLAGS="$(SANITIZE_FLAGS)" \
		> $(SANITIZE_DIR).configure.log 2>&1 || (cat $(SANITIZE_DIR).configure.log; exit 1)
	@cmake --build $(SANITIZE_DIR) -j $(JOBS)
	@cd $(SANITIZE_DIR) && ASAN_OPTIONS=detect_leaks=1 \
		UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j $(JOBS)

clean:
	@rm -rf $(BUILD_DIR) $(BUILD_DIR).configure.log $(SANITIZE_DIR) $(SANITIZE_DIR).configure.log

format:
	@git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format -i

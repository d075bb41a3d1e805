# Front door for people and CI: `make test`, `make demo`, `make bench`,
# `make sanitize` (every test under the address and undefined-behaviour checkers),
# `make tsan` (every test under the thread checker).
BUILD_DIR ?= build
BUILD_TYPE ?= Release
JOBS ?= $(shell nproc)

.PHONY: all deps configure build test bench demo clean format sanitize fuzz tsan

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
	@$(BUILD_DIR)/cli/keepcut session demo-out/picture.png cli/samples/demo_session.json -o demo-out/session

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

# Fuzzing: the engine built with clang's coverage and sanitizers, one libFuzzer
# program per family of host entries (tests/fuzz). Each runs FUZZ_SECONDS,
# growing its corpus in tests/fuzz/corpus/<target>; crashes and broken
# invariants land in tests/fuzz/found/<target>/ (replayed by `make test`).
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZ_TARGETS ?= $(basename $(notdir $(wildcard tests/fuzz/fuzz_*.cpp)))
FUZZ_FLAGS = -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined \
	-fno-omit-frame-pointer
# The targets decode a whole call from the first few hundred bytes, so inputs
# may be that long from the start; a call slower than 30 s counts as a hang.
FUZZ_OPTIONS = -max_len=1024 -len_control=0 -timeout=30 -report_slow_units=1000 -rss_limit_mb=4096 \
	-print_final_stats=1
fuzz:
	@scripts/install-deps.sh fuzz
	@cmake -S . -B $(FUZZ_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKC_FUZZ=ON \
		-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
		-DCMAKE_C_FLAGS="$(FUZZ_FLAGS)" -DCMAKE_CXX_FLAGS="$(FUZZ_FLAGS)" \
		> $(FUZZ_DIR).configure.log 2>&1 || (cat $(FUZZ_DIR).configure.log; exit 1)
	@cmake --build $(FUZZ_DIR) -j $(JOBS) --target $(FUZZ_TARGETS)
	@status=0; for t in $(FUZZ_TARGETS); do \
		mkdir -p tests/fuzz/corpus/$$t tests/fuzz/found/$$t; \
		echo "== $$t ($(FUZZ_SECONDS) s)"; \
		ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
		$(FUZZ_DIR)/tests/fuzz/$$t -max_total_time=$(FUZZ_SECONDS) $(FUZZ_OPTIONS) \
			-artifact_prefix=tests/fuzz/found/$$t/ tests/fuzz/corpus/$$t || status=1; \
	done; exit $$status

# The thread checker: a separate build under -fsanitize=thread running every
# test, among them two host threads computing at once (tests/threads). Any
# report fails the test that raised it. The suppressions name dependency
# internals only.
TSAN_DIR ?= build-tsan
TSAN_FLAGS = -fsanitize=thread -fno-omit-frame-pointer -include $(CURDIR)/tests/threads/tsan_build.h
tsan: deps
	@cmake -S . -B $(TSAN_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DCMAKE_C_FLAGS="$(TSAN_FLAGS)" -DCMAKE_CXX_FLAGS="$(TSAN_FLAGS)" \
		-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=thread -DCMAKE_SHARED_LINKER_FLAGS=-fsanitize=thread \
		> $(TSAN_DIR).configure.log 2>&1 || (cat $(TSAN_DIR).configure.log; exit 1)
	@cmake --build $(TSAN_DIR) -j $(JOBS)
	@cd $(TSAN_DIR) && TSAN_OPTIONS="second_deadlock_stack=1 suppressions=$(CURDIR)/tests/threads/tsan.supp" \
		ctest --output-on-failure -j $(JOBS)

clean:
	@rm -rf $(BUILD_DIR) $(BUILD_DIR).configure.log $(SANITIZE_DIR) $(SANITIZE_DIR).configure.log
	@rm -rf $(FUZZ_DIR) $(FUZZ_DIR).configure.log
	@rm -rf $(TSAN_DIR) $(TSAN_DIR).configure.log

format:
	@git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format -i

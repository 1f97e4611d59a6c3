# The two commands of the README: `make test` and `make demo`. Both install missing Debian
# packages first (with apt-get, when run as root), then configure a Release build and build it.
# (The libzip CMake package refers to its three command-line tools, so they are needed too.)

BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PACKAGES := cmake make g++ pkg-config libeigen3-dev libzip-dev zipcmp zipmerge ziptool libgtest-dev libbenchmark-dev libcli11-dev libfmt-dev nlohmann-json3-dev \
            mono-mcs mono-runtime
# libFuzzer comes with clang.
FUZZ_PACKAGES := clang-14 libclang-rt-14-dev

# The sanitizer builds, each in a folder of its own. Every finding stops the test that met it.
SANITIZE_DIR ?= build-sanitize
TSAN_DIR ?= build-tsan
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
SANITIZER_CMAKE := -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZANDO_BUILD_BENCHMARKS=OFF
export ASAN_OPTIONS ?= detect_leaks=1:detect_stack_use_after_return=1:strict_string_checks=1
export UBSAN_OPTIONS ?= halt_on_error=1:print_stacktrace=1
export TSAN_OPTIONS ?= halt_on_error=1:second_deadlock_stack=1
# The thread sanitizer's memory layout needs address randomisation off on newer kernels.
NO_RANDOM_LAYOUT := $(shell setarch $$(uname -m) -R true 2>/dev/null && echo "setarch $$(uname -m) -R")
# The whole suite, which holds every test with background jobs (training, background saving and
# loading, combinations, the concurrency stress); a regular expression narrows it.
TSAN_TESTS ?= .

# The 64-bit ARM build: Debian's cross compiler, the arm64 libraries of the multiarch folders, and
# the whole suite run under qemu-aarch64. Emulated, the library runs 15 to 75 times slower than
# natively; the tests stretch their time limits and the training times whose outcome they check
# by ARM64_TIME_SCALE (see tests/waiting.h), which leaves every timed check ample room while a
# training that runs to its limit takes 20 s rather than 2.
ARM64_DIR ?= build-arm64
ARM64_TIME_SCALE ?= 10
ARM64_PACKAGES := g++-aarch64-linux-gnu qemu-user pkgconf:arm64 libc6:arm64 libstdc++6:arm64 libzip-dev:arm64 \
                  zlib1g-dev:arm64 libgtest-dev:arm64 libbenchmark-dev:arm64 libfmt-dev:arm64

.PHONY: all deps fuzz-deps arm64-deps configure build test test-arm64 demo bench sanitize tsan fuzz clean

all: build

deps fuzz-deps: WANTED = $(if $(filter fuzz-deps,$@),$(FUZZ_PACKAGES),$(PACKAGES))
deps fuzz-deps:
	@missing=""; \
	for p in $(WANTED); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = "0" ]; then \
	    echo "Installing:$$missing"; \
	    DEBIAN_FRONTEND=noninteractive apt-get update -qq && \
	    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $$missing; \
	  else \
	    echo "Missing packages:$$missing (run as root, or: sudo apt-get install$$missing)"; exit 1; \
	  fi; \
	fi

# The host's packages, the arm64 architecture, then the cross build's packages.
arm64-deps: deps
	@dpkg --print-foreign-architectures | grep -qx arm64 || { \
	  if [ "$$(id -u)" = "0" ]; then \
	    echo "Adding the arm64 architecture"; dpkg --add-architecture arm64; \
	  else \
	    echo "The arm64 architecture is missing (run as root, or: sudo dpkg --add-architecture arm64)"; exit 1; \
	  fi; }
	@$(MAKE) --no-print-directory deps PACKAGES="$(ARM64_PACKAGES)"

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

test-arm64: arm64-deps
	cmake -S . -B $(ARM64_DIR) -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/aarch64-linux-gnu.cmake
	cmake --build $(ARM64_DIR) -j $(JOBS)
	ZANDO_TEST_TIME_SCALE=$(ARM64_TIME_SCALE) ctest --test-dir $(ARM64_DIR) --output-on-failure -j $(JOBS)

demo: build
	$(BUILD_DIR)/tools/zando_demo

bench: build
	$(BUILD_DIR)/bench/zando_bench --benchmark_out=$(BUILD_DIR)/bench.json --benchmark_out_format=json
	@echo
	@$(BUILD_DIR)/tools/zando_bench_summary $(BUILD_DIR)/bench.json

sanitize: deps
	cmake -S . -B $(SANITIZE_DIR) $(SANITIZER_CMAKE) -DZANDO_SANITIZE=address,undefined
	cmake --build $(SANITIZE_DIR) -j $(JOBS)
	ctest --test-dir $(SANITIZE_DIR) --output-on-failure -j $(JOBS)

tsan: deps
	cmake -S . -B $(TSAN_DIR) $(SANITIZER_CMAKE) -DZANDO_SANITIZE=thread -DZANDO_BUILD_TOOLS=OFF
	cmake --build $(TSAN_DIR) -j $(JOBS)
	$(NO_RANDOM_LAYOUT) ctest --test-dir $(TSAN_DIR) --output-on-failure -j $(JOBS) -R '$(TSAN_TESTS)'

# Each fuzz target for FUZZ_SECONDS, starting from valid files of every version its reader takes
# and from what earlier runs kept in $(FUZZ_DIR)/corpus; an input that fails is written to
# $(FUZZ_DIR)/findings, and the run stops there.
FUZZ_TARGETS := recognition_load_buffer recognition_import_buffer combinations_load_buffer
fuzz: deps fuzz-deps
	CC=clang-14 CXX=clang++-14 cmake -S . -B $(FUZZ_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZANDO_SANITIZE=address,undefined -DZANDO_BUILD_FUZZERS=ON \
	  -DZANDO_BUILD_TESTS=OFF -DZANDO_BUILD_BENCHMARKS=OFF -DZANDO_BUILD_TOOLS=OFF
	cmake --build $(FUZZ_DIR) -j $(JOBS)
	$(FUZZ_DIR)/fuzz/make_seeds $(FUZZ_DIR)/seeds
	@mkdir -p $(FUZZ_DIR)/findings
	@for target in $(FUZZ_TARGETS); do \
	  echo "== $$target, $(FUZZ_SECONDS) s"; \
	  mkdir -p $(FUZZ_DIR)/corpus/$$target; \
	  $(FUZZ_DIR)/fuzz/$$target -max_total_time=$(FUZZ_SECONDS) -max_len=65536 -timeout=10 -rss_limit_mb=2048 \
	    -artifact_prefix=$(FUZZ_DIR)/findings/$$target- -print_final_stats=1 \
	    $(FUZZ_DIR)/corpus/$$target $(FUZZ_DIR)/seeds/$$target || exit 1; \
	done

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(TSAN_DIR) $(FUZZ_DIR) $(ARM64_DIR)

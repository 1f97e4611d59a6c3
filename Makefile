# The two commands of the README: `make test` and `make demo`. Both install missing Debian
# packages first (with apt-get, when run as root), then configure a Release build and build it.
# (The libzip CMake package refers to its three command-line tools, so they are needed too.)

BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PACKAGES := cmake make g++ pkg-config libeigen3-dev libzip-dev zipcmp zipmerge ziptool libgtest-dev libbenchmark-dev libcli11-dev libfmt-dev nlohmann-json3-dev

.PHONY: all deps configure build test demo bench clean

all: build

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
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

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

demo: build
	$(BUILD_DIR)/tools/zando_demo

bench: build
	$(BUILD_DIR)/bench/zando_bench --benchmark_out=$(BUILD_DIR)/bench.json --benchmark_out_format=json
	@echo
	@$(BUILD_DIR)/tools/zando_bench_summary $(BUILD_DIR)/bench.json

clean:
	rm -rf $(BUILD_DIR)

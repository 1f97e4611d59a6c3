# The two commands of the README: `make test` and `make demo`. Both install missing Debian
# packages first (with apt-get, when run as root), then configure a Release build and build it.
# (The libzip CMake package refers to its three command-line tools, so they are needed too.)

BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PACKAGES := cmake make g++ pkg-config libeigen3-dev libzip-dev zipcmp zipmerge ziptool libgtest-dev libbenchmark-dev libcli11-dev libfmt-dev nlohmann-json3-dev \
            mono-mcs mono-runtime
# libFuzzer comes with clang.
FUZZ_PACKAGES := clang-14 libclang-rt-14-dev
# The Windows build: MinGW-w64 cross compilers (POSIX threads), zlib for MinGW, GoogleTest's and
# libzip's sources (the latter unpacked by dpkg-dev), Wine to run the tests.
WINDOWS_PACKAGES := cmake make libeigen3-dev googletest gcc-mingw-w64-x86-64-posix g++-mingw-w64-x86-64-posix \
            binutils-mingw-w64-x86-64 libz-mingw-w64-dev dpkg-dev wine wine64

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
ARM64_EXCHANGE_DIR := $(abspath $(ARM64_DIR))/exchange
ARM64_PACKAGES := g++-aarch64-linux-gnu qemu-user pkgconf:arm64 libc6:arm64 libstdc++6:arm64 libzip-dev:arm64 \
                  zlib1g-dev:arm64 libgtest-dev:arm64 libbenchmark-dev:arm64 libfmt-dev:arm64

# Windows x86-64: a DLL cross-compiled with MinGW-w64 and the suite run under Wine, in a Wine
# prefix of the build folder's own. libzip is built from Debian's source package for the target,
# as a static library inside the build folder.
WINDOWS_DIR ?= build-windows
WINDOWS_TOOLCHAIN := $(CURDIR)/cmake/mingw-w64-x86_64.cmake
WINDOWS_LIBZIP := $(WINDOWS_DIR)/libzip
WINE_RUN := env WINEPREFIX=$(abspath $(WINDOWS_DIR))/wineprefix WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml= DISPLAY= wine
# The set files that each build writes and the other reads.
EXCHANGE_DIR := $(abspath $(WINDOWS_DIR))/exchange

# WebAssembly: the library built with Debian's Emscripten, with threads (background training,
# saving and loading run on Web Workers that share the memory); zlib and libzip from Debian's
# source packages, built for the target in the build folder. The JavaScript module, the page and
# its tests live in web/; the page's npm packages (three.js, esbuild, puppeteer-core) in web/node_modules.
WASM_DIR ?= build-wasm
WASM_PACKAGES := cmake make libeigen3-dev emscripten dpkg-dev
WEB_TEST_PACKAGES := chromium
WASM_DEPS := $(abspath $(WASM_DIR))/deps
# Every object linked into a threaded module needs the atomics of -pthread; the shape warping's
# lane loops become 128-bit vector instructions, which every browser with WebXR has.
WASM_FLAGS := -pthread -fexceptions -msimd128
# libzip's configuration measures types by compiling probes, which it cannot read back from a
# threaded WebAssembly build; these are wasm32's sizes.
WASM_LIBZIP_SIZES := -DHAVE___INT8_LIBZIP=FALSE -DHAVE___INT16_LIBZIP=FALSE -DHAVE___INT32_LIBZIP=FALSE \
  -DHAVE___INT64_LIBZIP=FALSE -DHAVE_INT8_T_LIBZIP=TRUE -DINT8_T_LIBZIP=1 -DHAVE_UINT8_T_LIBZIP=TRUE -DUINT8_T_LIBZIP=1 \
  -DHAVE_INT16_T_LIBZIP=TRUE -DINT16_T_LIBZIP=2 -DHAVE_UINT16_T_LIBZIP=TRUE -DUINT16_T_LIBZIP=2 \
  -DHAVE_INT32_T_LIBZIP=TRUE -DINT32_T_LIBZIP=4 -DHAVE_UINT32_T_LIBZIP=TRUE -DUINT32_T_LIBZIP=4 \
  -DHAVE_INT64_T_LIBZIP=TRUE -DINT64_T_LIBZIP=8 -DHAVE_UINT64_T_LIBZIP=TRUE -DUINT64_T_LIBZIP=8 \
  -DHAVE_SHORT_LIBZIP=TRUE -DSHORT_LIBZIP=2 -DHAVE_INT_LIBZIP=TRUE -DINT_LIBZIP=4 -DHAVE_LONG_LIBZIP=TRUE -DLONG_LIBZIP=4 \
  -DHAVE_LONG_LONG_LIBZIP=TRUE -DLONG_LONG_LIBZIP=8 -DHAVE_SIZEOF_OFF_T=TRUE -DSIZEOF_OFF_T=8 \
  -DHAVE_SIZEOF_SIZE_T=TRUE -DSIZEOF_SIZE_T=4
WASM_ZLIB_SOURCES := adler32 compress crc32 deflate gzclose gzlib gzread gzwrite infback inffast inflate inftrees trees uncompr zutil

# Set files across two builds, in a recipe's shell: the native build and the other one (run as
# the fourth argument says) each write theirs into the folder, then each checks the other's.
# $(call exchange_sets,NATIVE NAME,OTHER NAME,FOLDER,OTHER COMMAND)
define exchange_sets
echo "== Set files across $(1) and $(2)"; \
rm -rf $(3) && mkdir -p $(3) && \
$(BUILD_DIR)/tests/exchange/file_exchange write $(3)/$(1) && \
$(4) write $(3)/$(2) && \
$(4) check $(3)/$(1) && \
$(BUILD_DIR)/tests/exchange/file_exchange check $(3)/$(2)
endef

.PHONY: all deps fuzz-deps arm64-deps windows-deps wasm-deps web-test-deps wasm test-web web-modules configure build test test-arm64 demo bench sanitize tsan fuzz \
        windows-sources windows-libzip build-arm64 build-windows test-windows dist clean

all: build

deps fuzz-deps windows-deps wasm-deps web-test-deps: WANTED = $(if $(filter fuzz-deps,$@),$(FUZZ_PACKAGES),$(if $(filter windows-deps,$@),$(WINDOWS_PACKAGES),$(if $(filter wasm-deps,$@),$(WASM_PACKAGES),$(if $(filter web-test-deps,$@),$(WEB_TEST_PACKAGES),$(PACKAGES)))))
deps fuzz-deps windows-deps wasm-deps web-test-deps:
	@missing=""; \
	for p in $(WANTED); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = "0" ]; then \
	    echo "Installing:$$missing"; \
	    DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=900 update -qq && \
	    DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=900 install -y -qq $$missing; \
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

build-arm64: arm64-deps
	cmake -S . -B $(ARM64_DIR) -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/aarch64-linux-gnu.cmake
	cmake --build $(ARM64_DIR) -j $(JOBS)

# The suite under qemu, then the set files across, as for Windows.
test-arm64: build-arm64 configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target file_exchange
	@suite=0; ZANDO_TEST_TIME_SCALE=$(ARM64_TIME_SCALE) ctest --test-dir $(ARM64_DIR) --output-on-failure -j $(JOBS) || suite=1; \
	$(call exchange_sets,x86-64,arm64,$(ARM64_EXCHANGE_DIR),qemu-aarch64 $(ARM64_DIR)/tests/exchange/file_exchange) && \
	exit $$suite

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

# apt-get source needs the source lists: the binary lists' archives, taken once more as sources.
windows-sources:
	@if ! apt-get indextargets --format '$$(CREATED_BY)' 2>/dev/null | grep -qx Sources; then \
	  if [ "$$(id -u)" != "0" ]; then echo "No source lists for apt-get source (run as root)"; exit 1; fi; \
	  echo "Adding source lists"; \
	  for f in /etc/apt/sources.list.d/*.sources; do \
	    [ -f "$$f" ] && grep -q '^Types:.*\bdeb\b' "$$f" && sed 's/^Types:.*/Types: deb-src/' "$$f"; echo; \
	  done > /tmp/zando-deb-src.sources && mv /tmp/zando-deb-src.sources /etc/apt/sources.list.d/; \
	  if [ -f /etc/apt/sources.list ]; then \
	    sed -n 's/^deb /deb-src /p' /etc/apt/sources.list > /etc/apt/sources.list.d/zando-deb-src.list; \
	  fi; \
	  apt-get -o DPkg::Lock::Timeout=900 update -qq; \
	fi

# libzip as Debian builds it (its source package, patches applied), without the tools, the
# optional compressors and encryption, linked against zlib for MinGW; its own warnings are quiet.
$(WINDOWS_LIBZIP)/lib/libzip.a:
	@$(MAKE) --no-print-directory windows-deps windows-sources
	rm -rf $(WINDOWS_LIBZIP) && mkdir -p $(WINDOWS_LIBZIP)/source
	cd $(WINDOWS_LIBZIP)/source && apt-get -o APT::Sandbox::User=root source -qq libzip
	cmake -S $$(find $(WINDOWS_LIBZIP)/source -mindepth 1 -maxdepth 1 -type d -name 'libzip-*') -B $(WINDOWS_LIBZIP)/build \
	  -DCMAKE_TOOLCHAIN_FILE=$(WINDOWS_TOOLCHAIN) -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=$(abspath $(WINDOWS_LIBZIP)) \
	  -DCMAKE_C_FLAGS=-w -DBUILD_SHARED_LIBS=OFF -DZLIB_USE_STATIC_LIBS=ON \
	  -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_COMMONCRYPTO=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF \
	  -DENABLE_OPENSSL=OFF -DENABLE_WINDOWS_CRYPTO=OFF \
	  -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF -Wno-dev \
	  > $(WINDOWS_LIBZIP)/configure.log 2>&1 || { cat $(WINDOWS_LIBZIP)/configure.log; exit 1; }
	cmake --build $(WINDOWS_LIBZIP)/build -j $(JOBS) > $(WINDOWS_LIBZIP)/build.log 2>&1 || { cat $(WINDOWS_LIBZIP)/build.log; exit 1; }
	cmake --install $(WINDOWS_LIBZIP)/build > $(WINDOWS_LIBZIP)/install.log 2>&1 || { cat $(WINDOWS_LIBZIP)/install.log; exit 1; }

windows-libzip: windows-deps $(WINDOWS_LIBZIP)/lib/libzip.a

# The demo, the command line and the benchmarks need libraries that exist here for Linux only.
build-windows: windows-libzip
	cmake -S . -B $(WINDOWS_DIR) -DCMAKE_TOOLCHAIN_FILE=$(WINDOWS_TOOLCHAIN) -DCMAKE_BUILD_TYPE=Release \
	  -DZANDO_BUILD_TOOLS=OFF -DZANDO_BUILD_BENCHMARKS=OFF -DZANDO_BUILD_CSHARP=OFF \
	  -DEigen3_DIR=/usr/share/eigen3/cmake -Dlibzip_DIR=$(abspath $(WINDOWS_LIBZIP))/lib/cmake/libzip
	cmake --build $(WINDOWS_DIR) -j $(JOBS)

# The suite under Wine, then the set files across: each build reads what the other wrote. The
# exchange runs whatever the suite said; either failing fails the target. A test that fails is
# run once more: now and then, on a loaded machine, Wine fails to start a test program at all
# (no output, a hundredth of a second). Intermittent faults of ours are left to the native,
# sanitizer and thread-checking suites, which run every test once.
test-windows: build-windows configure
	$(WINE_RUN) wineboot --init > $(WINDOWS_DIR)/wineboot.log 2>&1
	cmake --build $(BUILD_DIR) -j $(JOBS) --target file_exchange
	@suite=0; ctest --test-dir $(WINDOWS_DIR) --output-on-failure --repeat until-pass:2 -j $(JOBS) || suite=1; \
	$(call exchange_sets,Linux,Windows,$(EXCHANGE_DIR),$(WINE_RUN) $(WINDOWS_DIR)/bin/file_exchange.exe) && \
	exit $$suite

# One bundle a platform in $(DIST_DIR): what `cmake --install` puts in a prefix, the C# binding,
# the licence texts of what is compiled or linked in (Debian's copyright files), and a README.
DIST_DIR ?= dist
DIST_LINUX_LICENCES := libzip4 libeigen3-dev
DIST_WINDOWS_LICENCES := libzip4 libz-mingw-w64-dev libeigen3-dev g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev
dist: build build-arm64 build-windows
	mkdir -p $(DIST_DIR)
	tools/dist.sh linux-x86_64 $(BUILD_DIR) $(DIST_DIR) $(DIST_LINUX_LICENCES)
	tools/dist.sh linux-arm64 $(ARM64_DIR) $(DIST_DIR) $(DIST_LINUX_LICENCES)
	tools/dist.sh windows-x86_64 $(WINDOWS_DIR) $(DIST_DIR) $(DIST_WINDOWS_LICENCES)

# zlib, then libzip on it, each from its Debian source package (patches applied), as static
# libraries in $(WASM_DEPS); libzip without its tools, optional compressors and encryption.
$(WASM_DEPS)/lib/libz.a:
	@$(MAKE) --no-print-directory wasm-deps windows-sources
	rm -rf $(WASM_DIR)/zlib && mkdir -p $(WASM_DIR)/zlib/source
	cd $(WASM_DIR)/zlib/source && apt-get -o APT::Sandbox::User=root source -qq zlib
	@# Its CMake project refers to Windows files that Debian's source leaves out; the library is a
	@# handful of C files with no configuration to do.
	mkdir -p $(WASM_DIR)/zlib/build $(WASM_DEPS)/lib $(WASM_DEPS)/include
	cp $(WASM_DIR)/zlib/source/zlib-*/zlib.h $(WASM_DEPS)/include/
	cp $(WASM_DIR)/zlib/source/zlib-*/zconf.h.in $(WASM_DEPS)/include/zconf.h
	cd $(WASM_DIR)/zlib/source/zlib-* && for f in $(WASM_ZLIB_SOURCES); do \
	  emcc -O3 $(WASM_FLAGS) -w -I$(WASM_DEPS)/include -c $$f.c -o $(abspath $(WASM_DIR))/zlib/build/$$f.o || exit 1; done
	emar rcs $(WASM_DEPS)/lib/libz.a $(WASM_DIR)/zlib/build/*.o

$(WASM_DEPS)/lib/libzip.a: $(WASM_DEPS)/lib/libz.a
	rm -rf $(WASM_DIR)/libzip && mkdir -p $(WASM_DIR)/libzip/source
	cd $(WASM_DIR)/libzip/source && apt-get -o APT::Sandbox::User=root source -qq libzip
	emcmake cmake -S $$(find $(WASM_DIR)/libzip/source -mindepth 1 -maxdepth 1 -type d -name 'libzip-*') -B $(WASM_DIR)/libzip/build \
	  -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=$(WASM_DEPS) -DCMAKE_C_FLAGS="$(WASM_FLAGS) -w" \
	  -DZLIB_INCLUDE_DIR=$(WASM_DEPS)/include -DZLIB_LIBRARY=$(WASM_DEPS)/lib/libz.a -DBUILD_SHARED_LIBS=OFF $(WASM_LIBZIP_SIZES) \
	  -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_ZSTD=OFF -DENABLE_COMMONCRYPTO=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF \
	  -DENABLE_OPENSSL=OFF -DENABLE_WINDOWS_CRYPTO=OFF \
	  -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF -Wno-dev \
	  > $(WASM_DIR)/libzip/configure.log 2>&1 || { cat $(WASM_DIR)/libzip/configure.log; exit 1; }
	cmake --build $(WASM_DIR)/libzip/build -j $(JOBS) > $(WASM_DIR)/libzip/build.log 2>&1 || { cat $(WASM_DIR)/libzip/build.log; exit 1; }
	cmake --install $(WASM_DIR)/libzip/build > $(WASM_DIR)/libzip/install.log 2>&1 || { cat $(WASM_DIR)/libzip/install.log; exit 1; }

# Debian's Emscripten runs its JavaScript tools with Debian's node modules (acorn), which a node
# installed from elsewhere does not look for.
wasm: export NODE_PATH := /usr/share/nodejs
# The library and its JavaScript module: $(WASM_DIR)/package/ is the npm package (web/module/
# with zando-core.js, zando-core.wasm and zando-core.worker.js beside it).
wasm: wasm-deps $(WASM_DEPS)/lib/libzip.a
	emcmake cmake -S . -B $(WASM_DIR)/zando -DCMAKE_BUILD_TYPE=Release \
	  -DCMAKE_C_FLAGS="$(WASM_FLAGS)" -DCMAKE_CXX_FLAGS="$(WASM_FLAGS)" \
	  -DZANDO_BUILD_TESTS=OFF -DZANDO_BUILD_TOOLS=OFF -DZANDO_BUILD_BENCHMARKS=OFF -DZANDO_BUILD_CSHARP=OFF \
	  -DEigen3_DIR=/usr/share/eigen3/cmake -Dlibzip_DIR=$(WASM_DEPS)/lib/cmake/libzip \
	  -DZLIB_INCLUDE_DIR=$(WASM_DEPS)/include -DZLIB_LIBRARY=$(WASM_DEPS)/lib/libz.a
	cmake --build $(WASM_DIR)/zando -j $(JOBS) --target zando_web
	rm -rf $(WASM_DIR)/package && mkdir -p $(WASM_DIR)/package
	cp web/module/package.json web/module/zando.js web/module/zando.d.ts web/module/README.md $(WASM_DIR)/package/
	cp $(WASM_DIR)/zando/web/wasm/zando-core.js $(WASM_DIR)/zando/web/wasm/zando-core.wasm \
	   $(WASM_DIR)/zando/web/wasm/zando-core.worker.js $(WASM_DIR)/package/
	@cd $(WASM_DIR)/package && for f in zando-core.wasm zando-core.js zando-core.worker.js zando.js; do \
	  printf '%-22s %8d bytes, %7d gzipped\n' $$f $$(wc -c < $$f) $$(gzip -9c $$f | wc -c); done

# The page's npm packages (three.js, esbuild, puppeteer-core), as package-lock.json pins them.
web/node_modules/.installed: web/package-lock.json
	@command -v node >/dev/null && command -v npm >/dev/null || { echo "node and npm are needed for the page"; exit 1; }
	cd web && npm ci --no-audit --no-fund
	touch $@

# The page in Debian's Chromium, headless: recording and identification through the UI, training
# in the background, errors on the page, the native build's set files loaded there (the answers
# of tests/exchange/file_exchange), and the per-frame and end-of-stroke times beside the native
# ones (web/tests/frame_timing.cc). The screenshot goes to the test folder; WEB_SCREENSHOT=docs/web.png
# renews the README's.
WEB_TEST_DIR := $(WASM_DIR)/web-test
WEB_SCREENSHOT ?= $(WEB_TEST_DIR)/web.png
test-web: wasm web-test-deps configure web/node_modules/.installed
	cmake --build $(BUILD_DIR) -j $(JOBS) --target zando file_exchange
	node web/build.mjs $(WASM_DIR)/site $(WASM_DIR)/package
	rm -rf $(WEB_TEST_DIR) && mkdir -p $(WEB_TEST_DIR)
	$(BUILD_DIR)/tests/exchange/file_exchange write $(WEB_TEST_DIR)/native
	$(CXX) -O2 -std=c++17 -Wall -Wextra -Isrc/api/include -Itests/exchange web/tests/frame_timing.cc -L$(BUILD_DIR) -lzando \
	  -Wl,-rpath,$(abspath $(BUILD_DIR)) -o $(WEB_TEST_DIR)/frame_timing
	$(WEB_TEST_DIR)/frame_timing $(WEB_TEST_DIR)/native 20 > $(WEB_TEST_DIR)/native-timing.json
	node web/tests/run.mjs $(WASM_DIR)/site $(WEB_TEST_DIR)/native $(WEB_TEST_DIR)/native-timing.json $(WEB_SCREENSHOT)

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(TSAN_DIR) $(FUZZ_DIR) $(ARM64_DIR) $(WINDOWS_DIR) $(WASM_DIR) $(DIST_DIR)

# Oxlin: set-up, build, test and demo in one place. Every target installs what is missing.

BUILD_DIR ?= build
ASAN_DIR ?= build-asan
FUZZ_DIR ?= build-fuzz
# Seconds per harness: make fuzz runs each this long, make test-fuzz a short run on the corpus.
FUZZ_SECONDS ?= 600
FUZZ_TEST_SECONDS ?= 20
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
CTEST_FLAGS ?= --output-on-failure --timeout 600
DEMO_DIR ?= $(BUILD_DIR)/demo

export QT_QPA_PLATFORM ?= offscreen
export CCACHE_DIR ?= $(HOME)/.ccache
export CCACHE_MAXSIZE ?= 5G
# Paths relative to the checkout, so that a fresh clone elsewhere (CI) hits the same cache.
export CCACHE_BASEDIR ?= $(CURDIR)
export CCACHE_NOHASHDIR ?= 1

.PHONY: deps fuzz-deps configure build test test-release test-asan test-fuzz fuzz fuzz-build demo screenshots format format-check clean

deps:
	@bash scripts/install-deps.sh

# clang and its libFuzzer runtime, only for the fuzzing build.
fuzz-deps: deps
	@bash scripts/install-deps.sh --fuzz

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOX_WERROR=ON $(CMAKE_FLAGS)

$(ASAN_DIR)/build.ninja:
	cmake -S . -B $(ASAN_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DOX_WERROR=ON -DOX_SANITIZE=ON \
	    -DOX_BUILD_BENCH=OFF $(CMAKE_FLAGS)

configure: deps $(BUILD_DIR)/build.ninja

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

# The whole suite: the normal build, then the same tests under AddressSanitizer and
# UndefinedBehaviorSanitizer. intercept_tls_get_addr=0: this compiler's sanitizer runtime
# mistakes some heap-allocated thread-local blocks for an old C library's TLS header and its
# leak checker then crashes at exit ("Tracer caught signal 11") whenever the layout happens
# to line up; without the interceptor the checker scans TLS through the thread registry.
test: test-release test-asan

test-release: build
	cd $(BUILD_DIR) && ctest $(CTEST_FLAGS) -j $(JOBS)

test-asan: deps $(ASAN_DIR)/build.ninja
	cmake --build $(ASAN_DIR) -j $(JOBS)
	cd $(ASAN_DIR) && ASAN_OPTIONS=detect_leaks=1:fast_unwind_on_malloc=0:intercept_tls_get_addr=0 \
	    LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp:print_suppressions=0 \
	    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	    ctest $(CTEST_FLAGS) -j $(JOBS)

# The readers' libFuzzer harnesses (fuzz/): a clang build of only the harnesses and what they
# link, with coverage and the sanitizers. Not part of make test: a cold clang build of the host
# takes long; CI runs make test-fuzz as a job of its own.
$(FUZZ_DIR)/build.ninja:
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	    -DOX_FUZZ=ON -DOX_BUILD_TESTS=OFF -DOX_BUILD_BENCH=OFF $(CMAKE_FLAGS)

fuzz-build: fuzz-deps $(FUZZ_DIR)/build.ninja
	cmake --build $(FUZZ_DIR) -j $(JOBS) --target ox_fuzzers

fuzz: fuzz-build
	scripts/run-fuzzers.sh $(FUZZ_DIR) $(FUZZ_SECONDS)

test-fuzz: fuzz-build
	scripts/run-fuzzers.sh $(FUZZ_DIR) $(FUZZ_TEST_SECONDS)

# The main job on the built-in example: writes the example scene, opens it headless with the
# plug-ins, lists what it offers to a render job and renders it (a PNG and a multi-layer EXR),
# then runs the scripted configurator job (viewpoints x variant sets x passes).
DEMO_PASSES = beauty,diffuse_ibl,diffuse_light,diffuse_indirect,glossy_ibl,glossy_light,$\
    albedo,normal,camera_normal,depth,position,view,occlusion,materialID,mask,$\
    background_color,cryptoObject00,cryptoObject01,cryptoObject02,$\
    cryptoMaterial00,cryptoMaterial01,cryptoMaterial02
demo: build
	@mkdir -p $(DEMO_DIR)
	$(BUILD_DIR)/bin/oxlin --version
	$(BUILD_DIR)/bin/oxlin --no-gui --prefs-dir $(DEMO_DIR)/prefs --list-plugins
	$(BUILD_DIR)/bin/oxlin --write-example $(DEMO_DIR)/example
	$(BUILD_DIR)/bin/oxlin --no-gui --prefs-dir $(DEMO_DIR)/prefs $(DEMO_DIR)/example/showroom.oxp --list-scene
	$(BUILD_DIR)/bin/oxlin --no-gui --prefs-dir $(DEMO_DIR)/prefs $(DEMO_DIR)/example/showroom.oxp \
	    --snapshot $(DEMO_DIR)/showroom.png --size 640x360
	$(BUILD_DIR)/bin/oxlin --no-gui --prefs-dir $(DEMO_DIR)/prefs $(DEMO_DIR)/example/showroom.oxp \
	    --snapshot $(DEMO_DIR)/showroom_passes.exr --size 640x360 --samples 16 \
	    --view "Rear Three-Quarter" --passes $(DEMO_PASSES)
	$(BUILD_DIR)/bin/oxlin --no-gui --prefs-dir $(DEMO_DIR)/prefs $(DEMO_DIR)/example/showroom.oxp \
	    --script examples/configurator_job.py -- $(DEMO_DIR)/configurator

# Offscreen PNGs of the Render Settings window for review, in $(BUILD_DIR)/screenshots.
screenshots: build
	$(BUILD_DIR)/bin/oxscreenshots $(BUILD_DIR)/screenshots

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

format-check:
	git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror

clean:
	rm -rf $(BUILD_DIR) $(ASAN_DIR) $(FUZZ_DIR)

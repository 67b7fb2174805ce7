# Set-up, build, run and test in one place; see README.md.
BUILD      ?= build
BUILD_ASAN ?= build-asan
BUILD_FUZZ ?= build-fuzz
FUZZ       ?= scenario
FUZZ_TIME  ?= 60
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: deps configure build run test test-sanitize fuzz bench package screenshots mutation format clean

deps:
	@scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja $(CMAKE_ARGS) > /dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/bin/kxcpl $(ARGS)

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The widget-free tests under AddressSanitizer and UndefinedBehaviorSanitizer (no package made).
test-sanitize: deps
	@cmake -S . -B $(BUILD_ASAN) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKX_SANITIZE=ON -DKX_BUILD_BENCH=OFF > /dev/null
	@cmake --build $(BUILD_ASAN) -j $(JOBS)
	@cd $(BUILD_ASAN) && ctest --output-on-failure -j $(JOBS) -LE "gui|package"

# One fuzz target under libFuzzer and the sanitizers (needs clang); what it learns stays in
# $(BUILD_FUZZ)/corpus; an input that breaks it or takes over 10 s is saved in the current
# folder (crash-*, timeout-*).
fuzz: deps
	@cmake -S . -B $(BUILD_FUZZ) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
		-DKX_SANITIZE=ON -DKX_FUZZ_LIBFUZZER=ON -DKX_BUILD_TESTS=OFF -DKX_BUILD_BENCH=OFF > /dev/null
	@cmake --build $(BUILD_FUZZ) -j $(JOBS) --target fuzz_$(FUZZ)
	@mkdir -p $(BUILD_FUZZ)/corpus/$(FUZZ)
	$(BUILD_FUZZ)/bin/fuzz_$(FUZZ) -max_total_time=$(FUZZ_TIME) -timeout=10 $(BUILD_FUZZ)/corpus/$(FUZZ) \
		fuzz/corpus/$(FUZZ) $(if $(filter scenario,$(FUZZ)),scenarios)

# Single-line faults from scripts/mutation-faults/, each applied to a copy of the tree in
# build-mutation/ and checked against the tests that should notice it; reports the survivors.
# Slow (it rebuilds after every fault): MUTATION="acquire- main-" runs only those faults.
mutation: deps
	@scripts/mutation-check.py $(MUTATION)

bench: build
	@for b in $(BUILD)/bin/bench_*; do echo "== $$b"; $$b; done

# The Debian package, $(BUILD)/kxcpl_<version>_<architecture>.deb; see README.md.
package: configure
	@cmake --build $(BUILD) -j $(JOBS) --target kxcpl kxplate kx_docs
	@cd $(BUILD) && cpack

# The README's pictures, taken from the real windows on the simulated plates by the window
# tests; run after changing what the main window or the signals display shows.
screenshots: configure
	@cmake --build $(BUILD) -j $(JOBS) --target test_main_window
	@rm -rf $(BUILD)/screenshots && mkdir -p $(BUILD)/screenshots
	@KX_SCREENSHOT_DIR=$(abspath $(BUILD))/screenshots QT_QPA_PLATFORM=offscreen \
		$(BUILD)/tests/test_main_window \
		--gtest_filter='*TheMainWindowShowsEveryTextWhole:*ToolDialogs*/frmAcquireforces' \
		--gtest_brief=1 2> /dev/null
	@mkdir -p docs/screenshots
	@cp $(BUILD)/screenshots/frmMain.png docs/screenshots/main-window.png
	@cp $(BUILD)/screenshots/frmAcquire-forces.png docs/screenshots/signals-display.png

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) $(BUILD_ASAN) $(BUILD_FUZZ) build-mutation

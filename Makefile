# Set-up, build, run and test in one place; see README.md.
BUILD      ?= build
BUILD_ASAN ?= build-asan
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: deps configure build run test test-sanitize bench format clean

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

# The widget-free tests under AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitize: deps
	@cmake -S . -B $(BUILD_ASAN) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKX_SANITIZE=ON -DKX_BUILD_BENCH=OFF > /dev/null
	@cmake --build $(BUILD_ASAN) -j $(JOBS)
	@cd $(BUILD_ASAN) && ctest --output-on-failure -j $(JOBS) -LE gui

bench: build
	@for b in $(BUILD)/bin/bench_*; do echo "== $$b"; $$b; done

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) $(BUILD_ASAN)

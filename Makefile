# The two everyday commands, `make demo` and `make test`, install what the
# project needs on a Debian 12 machine and build in build/.
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
CMAKE_FLAGS ?=
JOBS ?= $(shell nproc)

.PHONY: demo test test-sanitize bench deps configure build clean format

deps:
	@./scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD) -G Ninja $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

demo: build
	@$(BUILD)/tools/tavrin example

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The tests once more, built with clang under AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitize: deps
	@cmake -S . -B $(SANITIZE_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_C_COMPILER=clang-14 \
	  -DTAVRIN_SANITIZE=address,undefined $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(SANITIZE_BUILD) -j $(JOBS)
	@cd $(SANITIZE_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --output-on-failure -j $(JOBS)

bench: deps
	@cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAVRIN_BUILD_BENCH=ON >/dev/null
	@cmake --build build-bench -j $(JOBS) --target tavrin_bench
	@build-bench/bench/tavrin_bench

format:
	@clang-format -i $$(git ls-files '*.cpp' '*.hpp')

clean:
	@rm -rf $(BUILD) $(SANITIZE_BUILD) build-bench

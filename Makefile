# The two everyday commands, `make demo` and `make test`, install what the
# project needs on a Debian 12 machine and build in build/.
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
TSAN_BUILD ?= build-tsan
CMAKE_FLAGS ?=
JOBS ?= $(shell nproc)

.PHONY: demo test test-sanitize test-tsan bench bench-link bench-link-build fuzz package docs deps \
  build clean format coverage check-format check-layers tidy mutate check-abi abi-baseline \
  browser-deps screenshot

deps:
	@./scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD) -G Ninja $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

demo: build
	@$(BUILD)/tools/tavrin demo

# The browser tests of the dashboard run when Chromium and their npm packages
# can be installed, and are skipped otherwise; with TAVRIN_REQUIRE_BROWSER=1
# (as in CI) either is a failure.
test: build browser-deps
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

browser-deps:
	@./scripts/install-browser-tests.sh || { [ -z "$$TAVRIN_REQUIRE_BROWSER" ] && \
	  echo "browser tests skipped: Chromium or their npm packages could not be installed"; }

# The dashboard's screenshot in docs/, taken by the browser test of an upload's page.
screenshot: build browser-deps
	@TAVRIN_TOOL=$(BUILD)/tools/tavrin TAVRIN_SOURCE_DIR=$(CURDIR) \
	  TAVRIN_SCREENSHOT=$(CURDIR)/docs/dashboard.png node tests/browser/dashboard.test.mjs

# The tests once more, built with clang under AddressSanitizer and UndefinedBehaviorSanitizer.
# An allocation too large to give returns null, as the C library's does: the tests ask for one.
test-sanitize: deps
	@cmake -S . -B $(SANITIZE_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_C_COMPILER=clang-14 \
	  -DTAVRIN_SANITIZE=address,undefined $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(SANITIZE_BUILD) -j $(JOBS)
	@cd $(SANITIZE_BUILD) && ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1 \
	  UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j $(JOBS)

# The tests in which another thread is part of the story, built with clang under
# ThreadSanitizer: platform completions (prompts, reminders), servers in the
# process answering the transport, the collection run and the sandbox under load
# on threads of their own, the sandbox's process, a thread per connection,
# stopped while clients hold their connections, runs on the library's thread
# (collectDataAsync) cancelled from the test's (SandboxCollection), and the
# dashboard's polls waiting on the exchange log, and a C host's prompts completed
# on its own threads and cancelled from another (CPlatform). TSAN_TESTS is a ctest regular
# expression over test names; extend it when a test of another waiting path is added.
TSAN_TESTS ?= Reminder|Prompt|CPlatform|RestServiceOverTls|CollectionRun|Privacy|SandboxServer|SandboxCollection|SandboxLoad|SandboxProcess|SandboxDashboard|DashboardJson
test-tsan: deps
	@cmake -S . -B $(TSAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_C_COMPILER=clang-14 \
	  -DTAVRIN_SANITIZE=thread $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(TSAN_BUILD) -j $(JOBS)
	@cd $(TSAN_BUILD) && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/tsan.supp" \
	  ctest --output-on-failure --no-tests=error -j $(JOBS) -R '$(TSAN_TESTS)'

# Every benchmark, the whole run on three phone sizes and the sandbox under
# load among them; the figures of the last two are written into
# docs/performance.md.
bench: deps
	@cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAVRIN_BUILD_BENCH=ON >/dev/null
	@cmake --build build-bench -j $(JOBS) --target tavrin_bench
	@TAVRIN_PERFORMANCE_REPORT=$(CURDIR)/docs/performance.md build-bench/bench/tavrin_bench

# The whole run over emulated 4G and 3G links, in a network namespace that the
# benchmark makes for itself (it needs root or CAP_SYS_ADMIN; without them it
# says so and measures nothing); the figures go into docs/performance.md.
bench-link: bench-link-build
	@TAVRIN_PERFORMANCE_REPORT=$(CURDIR)/docs/performance.md build-bench/bench/tavrin_bench_link
# The same benchmark built and not run, as CI keeps it.
bench-link-build: deps
	@cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAVRIN_BUILD_BENCH=ON >/dev/null
	@cmake --build build-bench -j $(JOBS) --target tavrin_bench_link

# Every fuzz target, built with clang and libFuzzer, run for FUZZ_SECONDS each.
# FUZZ_BUDGET makes an input that takes more than 2 seconds or 512 MB of
# memory count as a crash. The inputs under fuzz/regressions/TARGET, found before,
# run first.
FUZZ_SECONDS ?= 60
FUZZ_BUDGET ?= -timeout=2 -rss_limit_mb=512
fuzz: deps
	@cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_C_COMPILER=clang-14 \
	  -DTAVRIN_SANITIZE=address,undefined -DTAVRIN_BUILD_FUZZ=ON \
	  -DTAVRIN_BUILD_TESTS=OFF -DTAVRIN_BUILD_TOOLS=OFF $(CMAKE_FLAGS) >/dev/null
	@cmake --build build-fuzz -j $(JOBS)
	@for target in build-fuzz/fuzz/fuzz_*; do \
	  [ -x "$$target" ] || continue; \
	  name=$$(basename $$target); mkdir -p build-fuzz/corpus-$$name; \
	  echo "fuzzing $$name for $(FUZZ_SECONDS)s"; \
	  dict=fuzz/$${name#fuzz_}.dict; [ -f "$$dict" ] && dict="-dict=$$dict" || dict=; \
	  regressions=fuzz/regressions/$${name#fuzz_}; [ -d "$$regressions" ] || regressions=; \
	  $$target -max_total_time=$(FUZZ_SECONDS) $(FUZZ_BUDGET) $$dict \
	    build-fuzz/corpus-$$name $$regressions >build-fuzz/$$name.log 2>&1 \
	    || { tail -n 40 build-fuzz/$$name.log; exit 1; }; \
	  tail -n 1 build-fuzz/$$name.log; \
	done

# The Debian packages tavrinsdk and tavrinsdk-dev, made from the build in
# $(BUILD) (the one `make test` uses), into $(BUILD)/packages.
package: build
	@./scripts/install-deps.sh dpkg-dev file
	@cd $(BUILD) && cpack --config CPackConfig.cmake >cpack.log 2>&1 || { cat cpack.log; exit 1; }
	@ls $(BUILD)/packages/*.deb

# The API reference of include/tavrin, into $(BUILD)/docs/html. Fails when a
# public name has no documentation.
VERSION := ${shell sed -n 's/^project(tavrinsdk VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt}
docs:
	@./scripts/install-deps.sh doxygen
	@mkdir -p $(BUILD)/docs
	@TAVRIN_DOCS_OUTPUT=$(BUILD)/docs TAVRIN_VERSION=$(VERSION) doxygen docs/Doxyfile
	@echo "API reference: $(BUILD)/docs/html/index.html"

# The unit and integration tests once more in an instrumented build, and the
# share of the lines of src/ they run: printed, and in $(COVERAGE_BUILD)/coverage.
COVERAGE_BUILD ?= build-coverage
coverage: deps
	@./scripts/install-deps.sh gcovr
	@cmake -S . -B $(COVERAGE_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTAVRIN_COVERAGE=ON \
	  -DTAVRIN_BUILD_STATIC=OFF $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(COVERAGE_BUILD) -j $(JOBS)
	@find $(COVERAGE_BUILD) -name '*.gcda' -delete
	@cd $(COVERAGE_BUILD) && ctest --output-on-failure -j $(JOBS) -L 'unit|integration' >/dev/null
	@mkdir -p $(COVERAGE_BUILD)/coverage
	@gcovr -r . --object-directory $(COVERAGE_BUILD) --filter 'src/' -j $(JOBS) \
	  --exclude-unreachable-branches --print-summary \
	  --html-details $(COVERAGE_BUILD)/coverage/index.html | grep -E '^(lines|branches):'

# Sampled mutation testing of src/ (docs/testing.md): plants one small fault
# at a time in its own build, build-mutate/, runs the unit and integration
# tests against it and reports the faults they let through. Half an hour; not CI.
MUTATE_ARGS ?=
mutate: deps
	@python3 scripts/mutate.py $(MUTATE_ARGS)

# The house checks that need no build: includes point only down the layers,
# and every source is laid out as .clang-format says.
check-layers:
	@python3 scripts/check-layers.py
check-format:
	@./scripts/check-format.sh

# clang-tidy over the library, the tools and the bindings' native code, with the
# checks of .clang-tidy, using the compile commands of the build `make build` made.
tidy: build
	@./scripts/install-deps.sh clang-tidy-14
	@run-clang-tidy-14 -p $(BUILD) -j $(JOBS) -quiet '$(CURDIR)/(src|tools|bindings)/' >$(BUILD)/tidy.log 2>&1 \
	  || { grep -E 'warning:|error:' -A3 $(BUILD)/tidy.log | head -n 200; exit 1; }
	@echo "clang-tidy: no findings in src/, tools/ and bindings/"

# The shared library against the ABI baseline of the last release (abi/): a
# change that would break a binary built against it fails, unless the SONAME
# is new. `make abi-baseline` writes the baseline when a release is made.
ABI_BASELINE := abi/libtavrinsdk.so.1.abi
check-abi: build
	@./scripts/check-abi.sh $(ABI_BASELINE) $(BUILD)/src/libtavrinsdk.so
abi-baseline: build
	@./scripts/check-abi.sh --write-baseline $(BUILD)/src/libtavrinsdk.so include >$(ABI_BASELINE)

format:
	@clang-format -i $$(git ls-files '*.cpp' '*.hpp' '*.h' '*.c')

clean:
	@rm -rf $(BUILD) $(SANITIZE_BUILD) $(TSAN_BUILD) $(COVERAGE_BUILD) build-bench build-fuzz \
	  build-mutate

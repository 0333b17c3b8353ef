# make demo: install what is missing, build, run the example, say where the results are.
# make test: install what is missing, build, run every test.
BUILD ?= build
JOBS ?= 2

.PHONY: all deps configure build test demo bench catalogue clean

all: build

deps:
	@sh scripts/install-deps.sh

$(BUILD)/CMakeCache.txt:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo

configure: deps $(BUILD)/CMakeCache.txt

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

demo: build
	@mkdir -p out
	$(BUILD)/app/zelvarine render examples/demo.json
	@echo "demo: results are in $(CURDIR)/out"

catalogue: build
	$(BUILD)/app/zelvarine-catalogue

bench: build
	$(BUILD)/bench/zelvarine_bench --benchmark_counters_tabular=true

clean:
	rm -rf $(BUILD) out

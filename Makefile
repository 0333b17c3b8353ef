# make demo: install what is missing, build, run the example, say where the results are.
# make test: install what is missing, build, run every test.
BUILD ?= build
JOBS ?= 2

.PHONY: all deps configure build test demo bench bench-data catalogue fresh-check clean

all: build

deps:
	@sh scripts/install-deps.sh

# The generated Makefile, not the cache, marks a finished configure: a configure
# that failed leaves a cache behind, and the next make must try again.
$(BUILD)/Makefile:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo

configure: deps $(BUILD)/Makefile

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

demo: build
	@mkdir -p out
	$(BUILD)/app/zelvarine render examples/demo.json
	$(BUILD)/app/zelvarine render examples/region.json
	$(BUILD)/app/zelvarine render examples/data.json
	$(BUILD)/app/zelvarine render examples/shapes.json
	$(BUILD)/app/zelvarine render examples/flur.json
	$(BUILD)/app/zelvarine render examples/time.json
	$(BUILD)/app/zelvarine render examples/shape_gallery.json
	$(BUILD)/app/zelvarine render examples/morph.json
	@echo "demo: results are in $(CURDIR)/out"

catalogue: build
	$(BUILD)/app/zelvarine-catalogue

bench: build
	$(BUILD)/bench/zelvarine_bench --benchmark_counters_tabular=true

# dMath and dSort over a million items, then NumPy on the same arrays.
bench-data: build
	$(BUILD)/bench/zelvarine_bench --benchmark_filter='^Data' --benchmark_counters_tabular=true
	/usr/bin/python3 bench/numpy_data.py

# Slow (a Debian root is built and everything compiled in it): run before
# landing a change to the dependencies or the build.
fresh-check:
	sh scripts/fresh-check.sh

clean:
	rm -rf $(BUILD) out

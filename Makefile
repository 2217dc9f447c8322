# Sets up, builds and runs; the build itself is CMake's. All results go to build/, build-bench/ and
# demo/.

JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
BUILD := build
DEMO := demo
BENCH := build-bench

# What `make bench` measures: number of points, names of cases, runs of each side.
POINTS ?= 8M
ONLY ?= *
REPETITIONS ?= 5
DATA ?= $(BENCH)/data
RESULTS ?= $(BENCH)/results.json

PREFIX ?= /usr/local
DESTDIR ?=
CONFIGURE = cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_UNITY_BUILD=ON

.PHONY: help configure build demo install package docs test bench clean

help:
	@echo "make demo   build the command p3dgrid and run it on a sample case, in $(DEMO)/"
	@echo "make test   build everything and run all tests"
	@echo "make install [PREFIX=$(PREFIX)] [DESTDIR=]"
	@echo "            build command and library and install them"
	@echo "make package"
	@echo "            build a Debian package, in $(BUILD)/"
	@echo "make docs   write the reference pages of the headers, in $(BUILD)/reference/"
	@echo "make bench  measure speed and memory beside plain Fortran; POINTS=8M, ONLY=NAMES with * and ?,"
	@echo "            REPETITIONS=5, DATA=FOLDER for the files, RESULTS=FILE for JSON"
	@echo "make clean  remove $(BUILD)/, $(BENCH)/ and $(DEMO)/"
	@echo "each of them first installs the Debian packages that are missing"

configure:
	scripts/install-packages build
	$(CONFIGURE) -DBUILD_TESTING=OFF -DCMAKE_INSTALL_PREFIX=$(PREFIX) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) --parallel $(JOBS)

install: build
	DESTDIR=$(DESTDIR) cmake --install $(BUILD)

package: build
	cd $(BUILD) && cpack

demo: configure
	cmake --build $(BUILD) --parallel $(JOBS) --target p3dgrid
	scripts/demo $(BUILD)/tools/p3dgrid $(DEMO)

docs:
	scripts/install-packages docs
	$(CONFIGURE) -DBUILD_TESTING=OFF $(CMAKE_FLAGS)
	cmake --build $(BUILD) --target p3dgrid_docs

test:
	scripts/install-packages test
	$(CONFIGURE) -DBUILD_TESTING=ON $(CMAKE_FLAGS)
	cmake --build $(BUILD) --parallel $(JOBS)
	cd $(BUILD) && ctest --output-on-failure --parallel $(JOBS)

bench:
	scripts/install-packages bench
	cmake -S . -B $(BENCH) -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DMOD_P3DGRID_TOOLS=ON \
	  -DMOD_P3DGRID_BENCH=ON $(CMAKE_FLAGS)
	cmake --build $(BENCH) --parallel $(JOBS)
	bench/run $(BENCH)/bench --points $(POINTS) --only '$(ONLY)' --repetitions $(REPETITIONS) \
	  --data $(DATA) --json $(RESULTS)
	[ ! -x $(BENCH)/bench/p3dgrid_bench_pieces ] || $(BENCH)/bench/p3dgrid_bench_pieces --benchmark_min_time=0.05 \
	  --benchmark_out=$(BENCH)/pieces.json --benchmark_out_format=json

clean:
	rm -rf $(BUILD) $(BENCH) build-instructions build-static build-coverage $(DEMO)

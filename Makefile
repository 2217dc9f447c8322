# Sets up, builds and runs; the build itself is CMake's. All results go to build/ and demo/.

JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
BUILD := build
DEMO := demo

.PHONY: help demo test clean

help:
	@echo "make demo   build the command p3dgrid and run it on a sample case, in $(DEMO)/"
	@echo "make test   build everything and run all tests"
	@echo "make clean  remove $(BUILD)/ and $(DEMO)/"
	@echo "demo and test first install the Debian packages that are missing"

demo:
	scripts/install-packages build
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF $(CMAKE_FLAGS)
	cmake --build $(BUILD) --parallel $(JOBS) --target p3dgrid
	scripts/demo $(BUILD)/tools/p3dgrid $(DEMO)

test:
	scripts/install-packages test
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=ON $(CMAKE_FLAGS)
	cmake --build $(BUILD) --parallel $(JOBS)
	cd $(BUILD) && ctest --output-on-failure --parallel $(JOBS)

clean:
	rm -rf $(BUILD) $(DEMO)

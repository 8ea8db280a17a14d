# The two set-up commands: `make demo` and `make check`.
BUILD ?= build
SAN_BUILD ?= build-san
JOBS ?= $(shell nproc)

.PHONY: all deps build demo check check-san bench clean

all: build

deps:
	@scripts/install-deps

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

# Plays the demo song through the sound card; with no card (exit 3) it
# renders it to a wave file instead.
demo: build
	@$(BUILD)/bin/velaro play $(BUILD)/demo/demo.kar; rc=$$?; \
	if [ $$rc -eq 3 ]; then \
	  mkdir -p demo-out && $(BUILD)/bin/velaro render $(BUILD)/demo/demo.kar -o demo-out/demo.wav && \
	  echo "No sound device here: the demo song is rendered to demo-out/demo.wav instead."; \
	else exit $$rc; fi

check: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)
	$(MAKE) check-san

# Core and dsp again under AddressSanitizer and UndefinedBehaviorSanitizer.
check-san: deps
	cmake -S . -B $(SAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVELARO_SANITIZE=ON -DVELARO_CORE_ONLY=ON
	cmake --build $(SAN_BUILD) -j $(JOBS)
	cd $(SAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j $(JOBS)

bench: build
	$(BUILD)/bench/bench_readfile
	$(BUILD)/bench/bench_render

clean:
	rm -rf $(BUILD) $(SAN_BUILD)

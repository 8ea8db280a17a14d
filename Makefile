# The two set-up commands: `make demo` and `make check`.
BUILD ?= build
SAN_BUILD ?= build-san
TSAN_BUILD ?= build-tsan
FUZZ_BUILD ?= build-fuzz
SECONDS ?= 60
JOBS ?= $(shell nproc)

.PHONY: all deps build demo gui check check-san check-tsan bench fuzz clean

all: build

deps:
	@scripts/install-deps

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

# Plays the demo song with its lyric page in the terminal, recording what is
# played and the sync text into demo-out/. Without a sound card it runs on the
# virtual clock in real time all the same.
demo: build
	@mkdir -p demo-out
	$(BUILD)/bin/velaro play $(BUILD)/demo/demo.kar --out demo-out/demo.wav --sync demo-out/demo.lrc

# The desktop program.
gui: build
	$(BUILD)/bin/velaro-deck

check: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)
	$(MAKE) check-san
	$(MAKE) check-tsan

# Every test again under AddressSanitizer and UndefinedBehaviorSanitizer;
# leak suppressions only for third-party libraries.
check-san: deps
	cmake -S . -B $(SAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVELARO_SANITIZE=ON -DVELARO_CORE_ONLY=OFF
	cmake --build $(SAN_BUILD) -j $(JOBS)
	cd $(SAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp \
	  UBSAN_OPTIONS=print_stacktrace=1 QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

# The engine's tests (sequencer, synthesiser, recorder, streams, effects,
# devices) under ThreadSanitizer; suppressions only for third-party libraries.
check-tsan: deps
	cmake -S . -B $(TSAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELARO_TSAN=ON
	cmake --build $(TSAN_BUILD) -j $(JOBS) --target engine_tests
	cd $(TSAN_BUILD) && TSAN_OPTIONS="halt_on_error=1 suppressions=$(CURDIR)/tests/tsan.supp" \
	  ctest --output-on-failure -j $(JOBS) -E '_NOT_BUILT|^fuzz_corpus'

bench: build
	$(BUILD)/bench/bench_readfile
	$(BUILD)/bench/bench_render
	$(BUILD)/bench/bench_tags
	$(BUILD)/bench/bench_limiter
	$(BUILD)/bench/bench_sound
	$(BUILD)/bench/bench_encode
	$(BUILD)/bench/bench_record
	$(BUILD)/bench/bench_effects
	$(BUILD)/bench/bench_cd
	$(BUILD)/bench/bench_playlist
	$(BUILD)/bench/bench_backing
	$(BUILD)/bench/bench_lyrics
	$(BUILD)/bench/bench_start
	$(BUILD)/bench/bench_load

# Every reader of outside bytes under libFuzzer (clang), SECONDS each.
fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELARO_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target fuzz_targets
	scripts/run-fuzz $(FUZZ_BUILD) $(SECONDS)

clean:
	rm -rf $(BUILD) $(SAN_BUILD) $(TSAN_BUILD) $(FUZZ_BUILD)

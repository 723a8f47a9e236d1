#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a bounded time.
#   scripts/fuzz.sh [SECONDS]   (default 60 per target)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
seconds=${1:-60}
CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -G Ninja -DVXJSON_BUILD_FUZZ=ON \
  -DVXJSON_BUILD_TESTS=OFF -DVXJSON_BUILD_TOOLS=OFF -DVXJSON_FUZZ_SECONDS="$seconds" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build-fuzz
ctest --test-dir build-fuzz -L fuzz --output-on-failure -j 2

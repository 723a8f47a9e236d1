#!/usr/bin/env bash
# Builds vxjson and runs every test through ctest.
#   scripts/test.sh             the normal build (build/)
#   scripts/test.sh --sanitize  the same tests under ASan and UBSan (build-asan/)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
dir=build
flags=()
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  flags=(-DVXJSON_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
fi
cmake -S . -B "$dir" -G Ninja -DVXJSON_BUILD_TESTS=ON "${flags[@]}" > /dev/null
cmake --build "$dir"
ctest --test-dir "$dir" --output-on-failure -j 2 ${CTEST_EXTRA_ARGS:-}

#!/usr/bin/env bash
# Builds vxjson and runs every test through ctest.
#   scripts/test.sh             the normal build (build/)
#   scripts/test.sh --sanitize  the same tests under ASan and UBSan (build-asan/)
#   scripts/test.sh --tsan      the threads test under ThreadSanitizer (build-tsan/)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
dir=build
flags=()
targets=()
select=()
case "${1:-}" in
  --sanitize)
    dir=build-asan
    flags=(-DVXJSON_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    ;;
  --tsan)
    dir=build-tsan
    flags=(-DVXJSON_TSAN=ON -DVXJSON_BUILD_TOOLS=OFF)
    targets=(--target test_threads)
    select=(-R '^Threads\.')
    ;;
  "") ;;
  *) echo "usage: scripts/test.sh [--sanitize|--tsan]" >&2; exit 2 ;;
esac
cmake -S . -B "$dir" -G Ninja -DVXJSON_BUILD_TESTS=ON "${flags[@]}" > /dev/null
cmake --build "$dir" "${targets[@]}"
ctest --test-dir "$dir" --output-on-failure -j 2 "${select[@]}"

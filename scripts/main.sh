#!/usr/bin/env bash
# Builds vxjson and runs the main job: the command-line tool on the bundled
# samples (pretty-printing a good document, then checking a broken one).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake -S . -B build -G Ninja -DVXJSON_BUILD_TESTS=OFF > /dev/null
cmake --build build
if [ -x build/tools/vxjson ]; then
  echo "== vxjson format --pretty examples/sample.json"
  build/tools/vxjson format --pretty examples/sample.json
  echo "== vxjson check examples/broken.json"
  build/tools/vxjson check examples/broken.json || true
else
  build/examples/vxjson_example_tree
fi

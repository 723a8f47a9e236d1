#!/usr/bin/env bash
# Installs the Debian packages vxjson needs to build, test and benchmark.
# Runs apt only when something is missing, so repeated calls cost nothing.
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config python3 libgtest-dev libgmock-dev
          libbenchmark-dev clang-14 libclang-rt-14-dev
          rapidjson-dev libsimdjson-dev nlohmann-json3-dev
          sqlite3 libsqlite3-dev jq)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -qq
  "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}"
fi

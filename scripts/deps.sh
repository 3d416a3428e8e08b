#!/usr/bin/env bash
# Installs what a fresh Debian machine lacks to build and test the library.
set -euo pipefail
packages=(cmake ninja-build g++ clang clang-format-14 clang-tidy-14 pkg-config libgtest-dev libgmock-dev libbenchmark-dev python3-jsonschema)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo_cmd=""
    [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    $sudo_cmd apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}"
fi

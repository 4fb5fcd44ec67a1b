#!/usr/bin/env bash
# Installs the Debian packages that the build needs beyond the base image
# (compilers, CMake, Ninja, GoogleTest and Google Benchmark come with it).
# `bootstrap.sh --build` installs only what the library and the tool need (the
# quick start); without it, also what the tests, packaging checks, API
# reference, sanitizers, fuzzing and browser tests use. Does nothing when they
# are all present.
set -euo pipefail

build_packages=(nlohmann-json3-dev libcli11-dev)
test_packages=(g++-multilib libfuzzer-14-dev libclang-rt-14-dev pkg-config libxml2-utils
               python3-jsonschema chromium lintian dpkg-dev python3 time doxygen abigail-tools
               zsh fish)
packages=("${build_packages[@]}")
if [ "${1:-}" != "--build" ]; then
  packages+=("${test_packages[@]}")
fi
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
    missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null

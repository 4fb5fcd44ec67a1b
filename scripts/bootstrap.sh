#!/usr/bin/env bash
# Installs the Debian packages that the build needs beyond the base image
# (compilers, CMake, Ninja, GoogleTest and Google Benchmark come with it).
# Does nothing when they are all present.
set -euo pipefail

packages=(g++-multilib nlohmann-json3-dev libcli11-dev libfuzzer-14-dev libclang-rt-14-dev pkg-config
          libxml2-utils python3-jsonschema chromium lintian dpkg-dev python3 time)
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

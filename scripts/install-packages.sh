#!/usr/bin/env bash
# Installs the Debian packages that the build needs, and only those that are missing.
#   scripts/install-packages.sh          build, tests, benchmarks
#   scripts/install-packages.sh fuzz     what the fuzz targets need besides
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config dpkg-dev file
    libboost-filesystem-dev libfmt-dev libpugixml-dev nlohmann-json3-dev libvalijson-dev
    libcli11-dev libre2-dev libfast-float-dev
    librapidcheck-dev libgtest-dev libgmock-dev libbenchmark-dev)
if [[ ${1:-} == fuzz ]]; then
    packages+=(clang-14 libclang-rt-14-dev)
fi

missing=()
for package in "${packages[@]}"; do
    if [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
        missing+=("$package")
    fi
done
if ((${#missing[@]} == 0)); then
    exit 0
fi

as_root=()
if [[ $(id -u) != 0 ]]; then
    as_root=(sudo)
fi
echo "Installing: ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq >&2
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2

#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those missing.
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-multimedia-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    python3-numpy
    dpkg-dev desktop-file-utils appstream
    libeigen3-dev
    poppler-utils
    man-db lintian
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"

#!/usr/bin/env bash
# Installs the Debian 12 packages needed to build, test and run Oxlin.
# With --fuzz: the packages of the fuzzing build instead (make fuzz).
# Idempotent: packages already present are skipped, and nothing runs when all are there.
set -euo pipefail

PACKAGES=(
    build-essential cmake ninja-build ccache pkg-config clang-format
    qtbase5-dev qtbase5-dev-tools libqt5svg5-dev xvfb xauth fonts-dejavu-core
    libboost-dev libboost-python-dev python3-dev python3-pytest
    libembree-dev libtbb-dev
    libopenimageio-dev openimageio-tools python3-openimageio python3-numpy libopenexr-dev
    liblcms2-dev
    libavcodec-dev libavformat-dev libswscale-dev libavutil-dev ffmpeg
    libtinygltf-dev nlohmann-json3-dev libpugixml-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    slurm-wlm munge
)
# clang with its sanitizer and libFuzzer runtimes, for the fuzzing build only.
FUZZ_PACKAGES=(clang libclang-rt-14-dev)
if [ "${1:-}" = "--fuzz" ]; then
    PACKAGES=("${FUZZ_PACKAGES[@]}")
fi

missing=()
for p in "${PACKAGES[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "install-deps: all ${#PACKAGES[@]} packages present"
    exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
    SUDO="sudo"
fi

echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"

#!/bin/sh
# Installs the Debian packages the build needs, only those missing.
set -eu

# openimageio-tools: Debian's OpenImageIO CMake package exports its command-line
# tools as imported targets, and configuring fails when they are not installed.
# Shapes: polyclipping (boolean, offset), pugixml (SVG), potrace (tracing),
# GLU (tessellation). Benchmarks stand beside cairo, the potrace command,
# NumPy and OpenCV.
PACKAGES="g++ cmake make pkg-config ccache libtbb-dev libgtest-dev libbenchmark-dev
    libopenimageio-dev openimageio-tools nlohmann-json3-dev libcli11-dev
    libpolyclipping-dev libpugixml-dev libpotrace-dev libglu1-mesa-dev
    libcairo2-dev potrace python3-numpy libopencv-imgproc-dev"

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done

[ -z "$missing" ] && exit 0

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null 2>&1; then SUDO="sudo"; else
        echo "install-deps: missing packages:$missing (run as root to install them)" >&2
        exit 2
    fi
fi

echo "install-deps: installing$missing"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
# shellcheck disable=SC2086
$SUDO apt-get install -y -qq --no-install-recommends $missing

# Shared by the tests of this folder: builds and runs the program in consumer/ against an installed tree.
# shellcheck shell=bash
set -Eeuo pipefail
trap 'echo "$0: line $LINENO failed: $BASH_COMMAND" >&2' ERR

export CFLAGS="-m$bits" LDFLAGS="-m$bits"
export OMP_WAIT_POLICY=passive
folder=$(dirname "$(readlink -f "$0")")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

expect() {
    local program=$1
    [[ "$("$program")" == "libqelcvt7.so.6.1, $bits bits: status 0, 0 wrong" ]]
}

# Finds the package below the prefix $1, which is not where it was told to be installed.
useWithCMake() {
    local prefix=$1 built
    built=$(mktemp -d -p "$scratch")
    cmake -S "$folder/consumer" -B "$built" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_LIBRARY_ARCHITECTURE="$(basename "$libdir")" --log-level=WARNING >/dev/null
    cmake --build "$built" >/dev/null
    grep -qF "qelcv_DIR:PATH=$prefix/$libdir/cmake/qelcv" "$built/CMakeCache.txt"
    expect "$built/consumer"
}

useWithPkgConfig() {
    local prefix=$1 built
    built=$(mktemp -d -p "$scratch")
    cp "$folder"/consumer/{Makefile,consumer.c} "$built"
    export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
    [[ "$(pkg-config --modversion qelcv)" == "$version" ]]
    [[ "$(pkg-config --modversion qelcore)" == "$version" ]]
    make --silent -C "$built"
    LD_LIBRARY_PATH=$prefix/$libdir expect "$built/consumer"
}

# shellcheck shell=bash disable=SC2034,SC2154 # used by the scripts that source this
# Shared by tools/check_abi and tools/update_abi, which source it from the project's root after lib.sh.

abi_description=abi/libmub.abi

# set_abi_library [LIBRARY]: sets abi_library to LIBRARY. Without one, builds it with debug information, which
# describes the types; optimisation does not affect them.
set_abi_library() {
  if [ $# -gt 0 ]; then
    abi_library=$1
  else
    install_missing "${toolchain_packages[@]}"
    cmake --preset release -B build/abi -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$PWD/=" \
      -DMUB_BUILD_TESTS=OFF -DMUB_BUILD_BENCH=OFF -DMUB_BUILD_EXAMPLES=OFF -Wno-dev >&2
    cmake --build build/abi --parallel "$(nproc)" --target mub >&2
    abi_library=build/abi/libmub.so
  fi
  # Not grep -q: with pipefail, readelf must not fail because grep exits early.
  readelf -SW "$abi_library" | grep '\.debug_info' >/dev/null || {
    echo "$abi_library has no debug information, so its types cannot be compared: build it with -g" >&2
    exit 2
  }
}

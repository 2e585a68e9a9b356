# shellcheck shell=bash disable=SC2034,SC2154 # used by the scripts that source this
# What tools/check_abi and tools/update_abi share; sourced from the project's root after lib.sh.

abi_description=abi/libmub.abi

# set_abi_library [LIBRARY]: sets abi_library, and builds it if none is given: with debug information, which tells the
# types; optimisation makes no difference to them.
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
  # Read to its end: readelf would fail if grep went away before.
  readelf -SW "$abi_library" | grep '\.debug_info' >/dev/null || {
    echo "$abi_library has no debug information, and so tells nothing but names: build it with -g" >&2
    exit 2
  }
}

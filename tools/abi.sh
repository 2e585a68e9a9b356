# shellcheck shell=bash disable=SC2034 # used by the scripts that source this
# What tools/check_abi and tools/update_abi share; sourced from the project's root after lib.sh.

abi_packages=("${toolchain_packages[@]}" abigail-tools)
abi_description=abi/libmub.abi
# Types that only sources know are no part of the interface.
abi_public=(--headers-dir include --drop-private-types)

# build_for_abi: builds the library with debug information, which tells the types; the optimisation does not matter to
# them. Sets abi_library.
build_for_abi() {
  cmake --preset release -B build/abi -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$PWD/=" \
    -DMUB_BUILD_TESTS=OFF -DMUB_BUILD_BENCH=OFF -DMUB_BUILD_EXAMPLES=OFF -Wno-dev >/dev/null
  cmake --build build/abi --parallel "$(nproc)" --target mub >/dev/null
  abi_library=build/abi/libmub.so
}

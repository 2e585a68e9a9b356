# shellcheck shell=bash disable=SC2034 # the lists are used by the scripts that source this
# Shared by the scripts in tools/, which source it from the project's root.

say() { printf '\n== %s [after %d s]\n' "$*" "$SECONDS"; }

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# install_missing PACKAGE…: installs those of the Debian packages that are missing; runs apt only if one is.
install_missing() {
  if ! command -v dpkg-query >/dev/null; then
    echo "not a Debian system: assuming that these are installed in some form: $*" >&2
    return 0
  fi
  local package missing=()
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  say "installing ${missing[*]}"
  as_root apt-get update -q </dev/null
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -yq --no-install-recommends "${missing[@]}" </dev/null
}

toolchain_packages=(build-essential cmake ninja-build)
test_packages=(libgtest-dev python3 doxygen graphviz gdb valgrind)
cross_packages=(googletest qemu-user)
docs_packages=(doxygen graphviz python3)
browser_packages=(chromium chromium-driver python3-selenium fonts-dejavu-core)
clang_packages=(clang libclang-rt-14-dev llvm)
api_packages=(doxygen mandoc man-db nodejs npm python3-jsonschema)
lint_packages=(clang-format clang-tidy shellcheck)
size_packages=(cloc)
coverage_packages=(gcovr)
mutation_packages=(python3-clang-14)
bench_packages=(libbenchmark-dev libglib2.0-dev libabsl-dev libboost-dev uthash-dev zlib1g-dev
  libdeflate-dev libisal-dev pkg-config python3)
report_packages=(python3-matplotlib)

abi_packages=(abigail-tools)
packaging_packages=(debhelper doxygen dpkg-dev fakeroot graphviz lintian meson pkg-config)

# build_preset PRESET [ARGUMENT…]: configures and builds; the arguments are passed to the build.
build_preset() {
  local preset=$1
  shift
  cmake --preset "$preset" -Wno-dev
  cmake --build --preset "$preset" --parallel "$(nproc)" "$@"
}

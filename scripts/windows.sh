#!/usr/bin/env bash
# Builds everything for 64-bit Windows, runs all tests under Wine, looks at what the DLL shows and
# builds an application on what is installed. Arguments go to ctest, such as -R Rolling.
# Where the cross compiler, Wine or the sources of Expat cannot be had, it says so and passes.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

BUILD="$ROOT/build-windows"
# Expat and GoogleTest built for Windows, and CLI11.
DEPS="$BUILD/deps"
TOOLCHAIN="$ROOT/cmake/mingw-w64.cmake"

WINDOWS_NEEDED=(
  'g++-mingw-w64-x86-64-posix command:x86_64-w64-mingw32-g++-posix'
  'wine64 command:/usr/lib/wine/wine64'
  'dpkg-dev command:dpkg-source'
  'googletest command:/usr/src/googletest'
)

skip() {
  printf '\n== SKIPPED: ALL THAT CONCERNS WINDOWS. %s\n\n' "$*"
  exit 0
}

# Installs the cross compiler and Wine, or passes.
ensure_cross_packages() {
  is_debian || skip "It needs Debian's packages of MinGW-w64, Wine and Expat's source."
  local entry missing=()
  for entry in "${WINDOWS_NEEDED[@]}"; do
    is_present "${entry% *}" "package:" || missing+=("${entry% *}")
  done
  [[ ${#missing[@]} == 0 ]] || (install_packages "${missing[@]}") ||
    skip "Not installed: ${missing[*]}"
}

# source_lists FOLDER: copies the system's lists of packages to FOLDER, as lists of sources.
source_lists() {
  local list
  for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ -e $list ]] && sed -e 's/^deb /deb-src /' -- "$list" >"$1/$(basename -- "$list" .list).list"
  done
  for list in /etc/apt/sources.list.d/*.sources; do
    [[ -e $list ]] && sed -e 's/^Types:.*/Types: deb-src/' -- "$list" >"$1/$(basename -- "$list")"
  done
  return 0
}

# Unpacks Debian's source of Expat to build-windows/expat/source, the newest version there is, or
# returns 1. The system's own lists stay as they are.
fetch_expat() {
  local folder="$BUILD/expat" version apt
  [[ -e $folder/source ]] && return
  rm -rf -- "$folder"
  mkdir -p -- "$folder"/{lists/partial,cache/archives/partial,parts}
  source_lists "$folder/parts"
  apt=(-q -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$folder/parts"
    -o "Dir::State::Lists=$folder/lists" -o "Dir::Cache=$folder/cache")
  # Downloads by the user of the tool, who may not write here, would only be warned about.
  [[ $(id -u) != 0 ]] || apt+=(-o APT::Sandbox::User=root)
  cd -- "$folder"
  # A list that fails does no harm as long as another one has the source.
  apt-get "${apt[@]}" update </dev/null || true
  # A mirror may name a version that it does not have any more.
  for version in $(apt-cache "${apt[@]}" showsrc --only-source expat |
    sed -n 's/^Version: //p' | sort -Vru); do
    if apt-get "${apt[@]}" source "expat=$version" </dev/null; then
      # Debian's patches compare it with 1, as the other way to configure Expat defines it.
      sed -i -e 's/^#cmakedefine XML_DTD$/#cmakedefine XML_DTD 1/' expat-*/expat/*.cmake
      mv -- expat-*/ source
      return
    fi
  done
  return 1
}

# build_dependency NAME SOURCE OPTION...: builds what is at SOURCE with CMake and installs it.
build_dependency() {
  local name=$1 source=$2
  shift 2
  say "building $name for Windows"
  cmake -S "$source" -B "$BUILD/$name/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$DEPS" \
    -DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@"
  cmake --build "$BUILD/$name/build"
  cmake --install "$BUILD/$name/build" >/dev/null
}

build_dependencies() {
  if [[ ! -e $DEPS/complete ]]; then
    build_dependency expat "$BUILD/expat/source/expat" -DEXPAT_BUILD_TESTS=OFF \
      -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF -DEXPAT_BUILD_DOCS=OFF
    build_dependency googletest /usr/src/googletest -DBUILD_GMOCK=OFF
    # CLI11 is nothing but headers; the others beside it are not for Windows.
    mkdir -p -- "$DEPS/include" "$DEPS/share/cmake"
    cp -r /usr/include/CLI "$DEPS/include"
    cp -r /usr/share/cmake/CLI11 "$DEPS/share/cmake"
    touch -- "$DEPS/complete"
  fi
}

ensure_cross_packages
ensure_packages
mkdir -p -- "$BUILD"
(fetch_expat) || skip "The source of Expat cannot be had."
build_dependencies
build windows

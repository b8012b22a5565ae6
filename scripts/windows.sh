#!/usr/bin/env bash
# Builds everything for 64-bit Windows, runs all tests under Wine, looks at what the DLL shows and
# builds an application on what is installed. Arguments go to ctest, such as -R Rolling.
# Where the cross compiler, Wine or the sources of Expat cannot be had, it says so and passes.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

BUILD="$ROOT/build-windows"
# Expat and GoogleTest built for Windows, and the headers of CLI11 and nlohmann-json.
DEPS="$BUILD/deps"
TOOLCHAIN="$ROOT/cmake/mingw-w64.cmake"
WINE_RUN="$ROOT/scripts/wine.sh"
WINE_SERVER=/usr/lib/wine/wineserver64

# Debian's packages; there is no other way to come by all of them.
WINDOWS_NEEDED=(g++-mingw-w64-x86-64-posix wine64 dpkg-dev googletest)

skip() {
  printf '\n== SKIPPED: ALL THAT CONCERNS WINDOWS. %s\n\n' "$*"
  exit 0
}

# Installs the cross compiler and Wine, or passes.
ensure_cross_packages() {
  is_debian || skip "It needs Debian's packages of MinGW-w64, Wine and Expat's source."
  local package missing=()
  for package in "${WINDOWS_NEEDED[@]}"; do
    is_present "$package" package: || missing+=("$package")
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
    touch -- "$DEPS/complete"
  fi
  # These are nothing but headers; the others beside them are not for Windows.
  mkdir -p -- "$DEPS/include" "$DEPS/share/cmake"
  cp -ru /usr/include/{CLI,nlohmann} "$DEPS/include"
  cp -ru /usr/share/cmake/{CLI11,nlohmann_json} "$DEPS/share/cmake"
}

# Prints the tests that have failed with anything in their output.
loud_failures() {
  awk '/^[0-9]+\/[0-9]+ Test: / { name = $3; lines = 0 }
    /^Output:$/ { lines = -1; next }
    lines < 0 && /^-+$/ { lines = 0; reading = 1; next }
    /^<end of output>$/ { reading = 0 }
    reading { lines++ }
    /^Test Failed\.$/ && lines > 0 { print name }' "$BUILD/Testing/Temporary/LastTest.log"
}

# Wine now and then does not start a program, which has printed nothing then: such tests run again.
run_tests() {
  say "running the tests under Wine"
  ctest --test-dir "$BUILD" --output-on-failure -j2 "$@" && return
  [[ -z $(loud_failures) ]] || fail "tests have failed"
  say "running those again that Wine has not started"
  ctest --test-dir "$BUILD" --output-on-failure --rerun-failed
}

# A server that stays, so that not every program has to wait for one, and so that none of them
# becomes one that keeps their output open.
start_wine() {
  export WINEPREFIX="$BUILD/wine" WINEDEBUG=-all
  say "making Wine ready"
  mkdir -p -- "$WINEPREFIX"
  end_wine  # that of a run that was interrupted
  trap end_wine EXIT
  "$WINE_SERVER" -p >/dev/null 2>&1 </dev/null || fail "the server of Wine does not start"
  "$WINE_RUN" cmd.exe /c exit >/dev/null 2>&1 </dev/null || fail "Wine does not start"
}

end_wine() {
  "$WINE_SERVER" -k >/dev/null 2>&1 || true
}

# exported_names: prints what the DLL exports, as it reads in the source. The compiler puts the type
# information of std::exception beside that of classes derived from it.
exported_names() {
  x86_64-w64-mingw32-objdump -p "$BUILD/bin/kivlog4zeb.dll" |
    sed -n -e '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\s*\[ *[0-9]*\] //p' |
    x86_64-w64-mingw32-c++filt -n | grep -vx 'typeinfo for std::exception'
}

# Fails when the DLL exports anything but classes and functions that their header offers.
check_exports() {
  local public exported owners hidden
  public=$(cd -- "$ROOT" && find . -path './build*' -prune -o -name '*.h' -print0 | xargs -0 \
    sed -n -E -e 's/^(class|struct) LOG4ZEB_EXPORT ([A-Za-z0-9_]+).*/\2/p' \
    -e 's/^LOG4ZEB_EXPORT .* (operator[^(]+|[A-Za-z0-9_]+)\(.*/\1/p' | sort -u)
  exported=$(exported_names)
  owners=$(sed -E -e 's/^(vtable|VTT|typeinfo name|typeinfo|guard variable) for //' \
    -e 's/^(virtual|non-virtual) thunk to //' -e 's/\(.*//' -e 's/::.*//' <<<"$exported" | sort -u)
  hidden=$(comm -13 <(printf '%s\n' "$public") <(printf '%s\n' "$owners"))
  [[ -n $owners ]] || fail "kivlog4zeb.dll exports nothing"
  [[ -z $hidden ]] || fail "kivlog4zeb.dll exports what is hidden: ${hidden//$'\n'/, }"
  say "kivlog4zeb.dll exports $(wc -l <<<"$exported") symbols, all of" \
    "$(wc -l <<<"$owners") public classes and functions"
}

# Builds the first example with nothing but what is installed, and has it log.
check_installed() {
  local installed="$BUILD/installed" program
  rm -rf -- "$installed"
  cmake --install "$BUILD" --prefix "$installed" >/dev/null
  # Beside the DLL, which is then found before that of the build.
  program="$installed/bin/first.exe"
  x86_64-w64-mingw32-g++-posix -std=c++17 -I"$installed/include/kivlog4zeb" \
    "$ROOT/examples/first/first.cpp" -L"$installed/lib" -lkivlog4zeb -o "$program"
  (cd -- "$installed" && "$WINE_RUN" "$program" "Z:$ROOT/examples/first/first.xml")
  (($(grep -c ' INFO .* shop.orders - ' "$installed/first.log") == 4)) ||
    fail "the application built on what is installed did not log 4 lines"
  say "an application built on the installed headers and import library has logged"
}

ensure_cross_packages
ensure_packages
mkdir -p -- "$BUILD"
(fetch_expat) || skip "The source of Expat cannot be had."
build_dependencies
start_wine
build windows
run_tests "$@"
check_exports
check_installed
say "all that concerns Windows has passed"

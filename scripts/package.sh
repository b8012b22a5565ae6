#!/usr/bin/env bash
# Builds the Debian packages and what `cmake --install` installs, and a separate application on each
# way to come by the library: installed (shared and static; CMake package and pkg-config), as a part
# of the application's project, and from the packages, which are installed for that and removed
# again. That last part needs root and is left out without it.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

PACKAGING_NEEDED=(
  'groff-base command:groff'
  'pkg-config command:pkg-config'
)
if is_debian; then
  PACKAGING_NEEDED+=('dpkg-dev command:dpkg-shlibdeps')
fi

BUILD="$ROOT/build-package"
# Applications, installed files; made anew by each run.
WORK="$BUILD/try"
DOCUMENT="$ROOT/examples/first/first.xml"
VERSION=$(sed -n 's/^project(kivlog4zeb VERSION \([0-9.]*\) .*/\1/p' "$ROOT/CMakeLists.txt")

# check_application NAME PROGRAM: runs an application and looks at what it has logged.
check_application() {
  local folder="$WORK/run-$1"
  mkdir -p -- "$folder"
  (cd -- "$folder" && "$2" "$DOCUMENT" >/dev/null)
  (($(grep -c ' INFO .* shop.orders - ' "$folder/first.log") == 4)) ||
    fail "the application built by $1 did not log 4 lines"
  say "an application built by $1 has logged"
}

# build_project NAME SOURCE OPTION...: configures and builds a project of its own.
build_project() {
  local name=$1 folder="$WORK/$1" source=$2
  shift 2
  cmake -S "$source" -B "$folder" -G Ninja -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    "$@" >"$folder.log" 2>&1 &&
    cmake --build "$folder" >>"$folder.log" 2>&1 ||
    { tail -n 40 -- "$folder.log" >&2 && fail "the application of $name was not built"; }
}

# cmake_application NAME OPTION...: configures, builds and checks the application.
cmake_application() {
  build_project "$1" "$WORK/application" -DVERSION="$VERSION" "${@:2}"
  check_application "$1" "$WORK/$1/my_program"
}

# pkg_config_application NAME [OPTION...]: the same with nothing but the compiler and pkg-config,
# which finds the library by the options or by itself.
pkg_config_application() {
  local name=$1 program="$WORK/$1" flags
  shift
  [[ $(pkg-config "$@" --modversion kivlog4zeb) == "$VERSION" ]] ||
    fail "$name: pkg-config does not know version $VERSION"
  read -ra flags < <(pkg-config "$@" --cflags --libs kivlog4zeb)
  g++ -std=c++17 "$ROOT/examples/first/first.cpp" "${flags[@]}" -o "$program"
  check_application "$name" "$program"
}

# install_elsewhere BUILD NAME: installs what BUILD has built and moves it, since what is installed
# may not depend on its place.
install_elsewhere() {
  cmake --install "$1" --prefix "$WORK/$2-first" >/dev/null
  mv -- "$WORK/$2-first" "$WORK/$2"
}

# library_folder PREFIX: where the libraries are in it.
library_folder() {
  local file
  file=$(find "$1" -name kivlog4zeb.pc)
  dirname -- "$(dirname -- "$file")"
}

# The command has to find the library beside it, and its manual page and completion have to know
# all that the command knows.
check_command() {
  local command="$WORK/shared/bin/log4zeb" man="$WORK/shared/share/man/man1/log4zeb.1"
  local completion="$WORK/shared/share/bash-completion/completions/log4zeb" subcommand option
  [[ $("$command" --version) == "log4zeb $VERSION" ]] || fail "the installed command is another"
  [[ -z $(groff -man -ww -z "$man" 2>&1) ]] || fail "groff complains of the manual page"
  for subcommand in $("$command" --help | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/\1/p'); do
    grep -qx ".B log4zeb $subcommand.*" "$man" || fail "the manual page lacks $subcommand"
    grep -qx -e "$subcommand" <<<"$(complete_words "$completion" '')" ||
      fail "the completion lacks $subcommand"
    for option in $("$command" "$subcommand" --help | grep -o -E '^ +(-[a-z],)?--[a-z-]+' |
      grep -o -e '--.*'); do
      grep -q -e "$option\b" <<<"$(sed -e 's/\\-/-/g' -- "$man")" ||
        fail "the manual page lacks $option of $subcommand"
      grep -qx -e "$option" <<<"$(complete_words "$completion" "$subcommand" --)" ||
        fail "the completion lacks $option of $subcommand"
    done
  done
  say "the manual page and the completion know all subcommands and options"
}

# complete_words COMPLETION WORD...: prints what bash would offer for the last word.
complete_words() (
  # shellcheck source=/dev/null
  source "$1"
  COMP_WORDS=(log4zeb "${@:2}")
  COMP_CWORD=$(($# - 1))
  _log4zeb
  printf '%s\n' "${COMPREPLY[@]}"
)

check_installed() {
  local libraries
  install_elsewhere "$BUILD" shared
  libraries=$(library_folder "$WORK/shared")
  [[ -e $libraries/libkivlog4zeb.so.$VERSION ]] || fail "the library's name has no version"
  export LD_LIBRARY_PATH="$libraries"
  cmake_application find_package -DWAY=find_package -DCMAKE_PREFIX_PATH="$WORK/shared"
  build_project first "$ROOT/examples/first" -DCMAKE_PREFIX_PATH="$WORK/shared"
  check_application first "$WORK/first/first"
  pkg_config_application pkg-config --with-path="$libraries/pkgconfig"
  unset LD_LIBRARY_PATH
  check_command
}

# As a part of the application's project, once shared and once static; the static library is also
# installed from there.
check_as_a_part() {
  cmake_application add_subdirectory -DWAY=add_subdirectory -DKIND=SHARED_LIBRARY
  cmake_application FetchContent -DWAY=FetchContent -DKIND=STATIC_LIBRARY \
    -DBUILD_SHARED_LIBS=OFF -DLOG4ZEB_INSTALL=ON
  install_elsewhere "$WORK/FetchContent" static
  cmake_application find_package_static -DWAY=find_package -DCMAKE_PREFIX_PATH="$WORK/static"
  pkg_config_application pkg-config_static \
    --with-path="$(library_folder "$WORK/static")/pkgconfig"
}

# The names of the packages that were made.
package_names() {
  local file
  for file in "$WORK"/packages/*.deb; do
    dpkg-deb -f "$file" Package
  done
}

remove_packages() {
  dpkg --purge "${names[@]}" >/dev/null 2>&1 || true
}

check_debian_packages() {
  local names name files file
  if [[ $(id -u) != 0 ]] || ! is_debian; then
    say "SKIPPED: installing the Debian packages needs Debian and root"
    return
  fi
  mapfile -t names < <(package_names)
  for name in "${names[@]}"; do
    if [[ -n $(dpkg-query -W -f='${Package}' "$name" 2>/dev/null) ]]; then
      say "SKIPPED: the package $name is installed here already, and stays"
      return
    fi
  done
  trap remove_packages EXIT
  dpkg -i "$WORK"/packages/*.deb >/dev/null
  [[ $(log4zeb --version) == "log4zeb $VERSION" ]] || fail "the packaged command does not run"
  cmake_application packages_cmake -DWAY=find_package
  pkg_config_application packages_pkg-config
  mapfile -t files < <(dpkg -L "${names[@]}" | grep -E 'log4zeb')
  ((${#files[@]} > 100)) || fail "the packages hold ${#files[@]} files only"
  dpkg -r "${names[@]}" >/dev/null
  # Says of each package without anything left to purge that it is not there.
  dpkg --purge "${names[@]}" >/dev/null 2>&1
  trap - EXIT
  [[ -z $(dpkg-query -W -f='${Package}' "${names[@]}" 2>/dev/null) ]] ||
    fail "packages are left: ${names[*]}"
  for file in "${files[@]}"; do
    [[ ! -e $file ]] || fail "$file is left after the packages were removed"
  done
  ! ldconfig -p | grep kivlog4zeb || fail "the loader still knows the library"
  say "${names[*]}: installed, used and removed, ${#files[@]} files gone"
}

ensure_packages "${PACKAGING_NEEDED[@]}"
build package
rm -rf -- "$WORK"
mkdir -p -- "$WORK"
cp -r -- "$ROOT/tests/packaging" "$WORK/application"
ln -s -- "$ROOT" "$WORK/application/log4zeb"
check_installed
check_as_a_part
if is_debian; then
  say "making the Debian packages"
  (cd -- "$BUILD" && cpack -B "$WORK/packages" >"$WORK/cpack.log") || fail "see $WORK/cpack.log"
  check_debian_packages
fi
say "every way to the library works"

#!/usr/bin/env bash
# Runs a program built for Windows under Wine, with a prefix of the build's own and with the DLLs of
# the compiler, of the build and of what it needs in the loader's path. Usage: wine.sh PROGRAM [ARG...]
set -euo pipefail

ROOT=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
BUILD="$ROOT/build-windows"

# dll_folders: prints the folders for WINEPATH, separated as Windows does it.
dll_folders() {
  local dll path folders=()
  for dll in libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll; do
    path=$(x86_64-w64-mingw32-g++-posix -print-file-name="$dll")
    folders+=("Z:$(dirname -- "$(realpath -- "$path")")")
  done
  local IFS=';'
  printf '%s' "Z:$BUILD/bin;Z:$BUILD/deps/bin;${folders[*]}"
}

export WINEDEBUG=${WINEDEBUG--all}
export WINEPREFIX=${WINEPREFIX-$BUILD/wine}
# Neither a browser engine nor another runtime is to be offered when the prefix is made.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES-mscoree,mshtml=}
export WINEPATH=${WINEPATH-$(dll_folders)}
exec "${WINE-/usr/lib/wine/wine64}" "$@"

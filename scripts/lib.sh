# What the scripts share: where the project is, what it needs, how it is built. To be sourced by
# bash after `set -euo pipefail`.

ROOT=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)

say() {
  printf '== %s\n' "$*"
}

fail() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# The Debian packages that the build needs, each with what shows that it is installed: a command,
# or a header that the compiler finds.
NEEDED=(
  'g++ command:g++'
  'cmake command:cmake'
  'ninja-build command:ninja'
  'ccache command:ccache'
  'libexpat1-dev header:expat.h'
  'libgtest-dev header:gtest/gtest.h'
  'libcli11-dev header:CLI/CLI.hpp'
  'nlohmann-json3-dev header:nlohmann/json.hpp'
)

# What the tests run besides, in the same form.
TEST_NEEDED=(
  'default-jdk-headless command:javac'
  'libfmt-dev header:fmt/format.h'
  'rsyslog command:/usr/sbin/rsyslogd'
)

is_debian() {
  [[ -e /etc/debian_version ]] && command -v apt-get >/dev/null
}

# Whether the package is installed, told by its command or header where there is no such package.
is_present() {
  local package=$1 kind=${2%%:*} what=${2#*:}
  if [[ $kind == command ]]; then
    command -v "$what" >/dev/null
  elif is_debian; then
    [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed ]]
  else
    printf '#include <%s>\n' "$what" | g++ -std=c++17 -fsyntax-only -x c++ - 2>/dev/null
  fi
}

# Installs the packages with root's rights.
install_packages() {
  local as_root=()
  if [[ $(id -u) != 0 ]]; then
    command -v sudo >/dev/null ||
      fail "these packages are missing, and installing them needs root or sudo: $*"
    as_root=(sudo)
  fi
  as_root+=(env DEBIAN_FRONTEND=noninteractive)
  say "installing $*"
  "${as_root[@]}" apt-get update </dev/null
  "${as_root[@]}" apt-get install -y --no-install-recommends "$@" </dev/null
}

# ensure_packages [ENTRY...]: makes sure that everything the build needs is there, and the entries:
# installs it on Debian, elsewhere names what is missing and stops.
ensure_packages() {
  local entry missing=() names=()
  for entry in "${NEEDED[@]}" "$@"; do
    if ! is_present "${entry% *}" "${entry#* }"; then
      missing+=("${entry% *}")
      names+=("${entry#*:} (${entry% *} on Debian)")
    fi
  done
  [[ ${#missing[@]} == 0 ]] && return
  if is_debian; then
    install_packages "${missing[@]}"
  else
    printf 'missing: %s\n' "${names[@]}" >&2
    fail "install what is missing and run it again"
  fi
}

# build PRESET [TARGET...]: configures and builds.
build() {
  local preset=$1
  shift
  say "building the preset $preset"
  (cd -- "$ROOT" && cmake --preset "$preset" &&
    cmake --build --preset "$preset" ${1+--target "$@"})
}

# Prints a prefix for commands that use the thread sanitizer, which does not start where the kernel
# spreads addresses wider than it was made for.
fixed_addresses() {
  local spread=0
  [[ -r /proc/sys/vm/mmap_rnd_bits ]] && spread=$(</proc/sys/vm/mmap_rnd_bits)
  if ((spread > 28)) && setarch "$(uname -m)" -R true 2>/dev/null; then
    printf 'setarch %s -R' "$(uname -m)"
  fi
}

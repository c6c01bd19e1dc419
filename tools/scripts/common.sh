# Shared by ./run, ./test and .ci/run; sourced with the repository's root as the current folder.

say() { printf '%s\n' "$*" >&2; }

die() {
  say "$*"
  exit 1
}

# missing_packages FILE...: the packages that these lists name and that are not installed.
missing_packages() {
  local package
  while read -r package; do
    case $package in '' | '#'*) continue ;; esac
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || printf '%s\n' "$package"
  done < <(cat "$@")
}

# install_missing [FILE...]: what builds and tests the program, and what further lists name. Asks the network only when
# something is missing.
install_missing() {
  if ! command -v dpkg-query >/dev/null; then
    say "This is no Debian system; the packages of tools/scripts/packages.txt must be there already."
    return
  fi
  local missing=()
  mapfile -t missing < <(missing_packages tools/scripts/packages.txt "$@")
  if [ ${#missing[@]} -eq 0 ]; then return; fi
  say "Installing: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then as_root=(sudo); fi
  "${as_root[@]}" apt-get update -q >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${missing[@]}" >&2
}

# build PRESET [TARGET...]: everything when no target is named.
build() {
  local preset=$1
  shift
  cmake --preset "$preset" >build/configure-"$preset".log 2>&1 ||
    { cat build/configure-"$preset".log >&2; return 1; }
  local targets=()
  if [ $# -gt 0 ]; then targets=(--target "$@"); fi
  cmake --build --preset "$preset" "${targets[@]}" >&2
}

# Wine with an installation of its own below build/, in German, since the suite's practices are; sourced.

# copy_compiler_libraries FOLDER: what programs of this compiler need beside them.
copy_compiler_libraries() {
  local name
  for name in libgcc_s_seh-1 libstdc++-6 libwinpthread-1; do
    cp "$(x86_64-w64-mingw32-g++-posix -print-file-name="$name.dll")" "$1/"
  done
}

# What Wine calls the system's pages and languages comes from the locale, which a build machine may not have.
prepare_wine() {
  local locales=$PWD/build/windows/locales
  # A program that crashes ends instead of waiting in a debugger.
  export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES='mscoree,mshtml,winedbg.exe='
  mkdir -p "$locales"
  if [ ! -d "$locales/de_DE.UTF-8" ]; then localedef -i de_DE -f UTF-8 "$locales/de_DE.UTF-8"; fi
  # The shell itself does not find this locale, and says so.
  { export LOCPATH=$locales LC_ALL=de_DE.UTF-8; } 2>/dev/null
  if [ ! -d "$WINEPREFIX" ]; then
    wineboot --init >&2 2>&1
    wine winecfg -v win10 >&2
  fi
}

# windows_path PATH: as a program under Wine names it.
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

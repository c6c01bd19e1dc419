# Debian's sources for the libraries of the Windows program; sourced by build-libraries.

# apt_sources LIST NAME: the system's own lists and cache stay as they are; source entries are read from lists of our own, for
# the archives that the system uses (all) or those without the security archive (main).
apt_sources() {
  local lists=$base/apt options
  options=(-o Dir::Etc::sourceparts=/dev/null -o "Dir::State::lists=$lists/lists" -o "Dir::Cache=$lists/cache"
    -o APT::Sandbox::User= -q)
  if [ ! -e "$lists/updated" ]; then
    mkdir -p "$lists/lists/partial" "$lists/cache/archives/partial"
    apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' | sort -u |
      sed 's|^|deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] |' >"$lists/all.list"
    grep -v -e '-security ' "$lists/all.list" >"$lists/main.list"
    apt-get "${options[@]}" -o "Dir::Etc::sourcelist=$lists/all.list" update >&2
    touch "$lists/updated"
  fi
  apt-get "${options[@]}" -o "Dir::Etc::sourcelist=$lists/$1.list" source --download-only "$2" >&2
}

# download NAME: into the current folder, which is empty.
download() {
  # A source may have moved from the security archive, which still lists it, to the main one.
  if apt_sources all "$1"; then return; fi
  rm -f ./*
  apt_sources main "$1"
}

# fetch_source NAME FOLDER GIVEN ARCHIVE: fills the folder unless it is there already, from the folder of archives that the user
# gave if it has ARCHIVE-VERSION.tar.*, else from Debian.
fetch_source() {
  local name=$1 folder=$2 given=$3 begins=$4
  if [ -e "$folder/complete" ]; then return; fi
  rm -rf "$folder"
  mkdir -p "$folder"
  local archive=
  if [ -n "$given" ]; then archive=$(find "$given" -maxdepth 1 -name "$begins[-_][0-9]*.tar.*" | sort | tail -n 1); fi
  if [ -n "$archive" ]; then
    cp "$archive" "$folder/"
  elif ! (cd "$folder" && download "$name"); then
    # Some mirrors lack the part with Debian's own files; the program's sources alone do as well.
    compgen -G "$folder/*.orig.tar.*" >/dev/null ||
      die "The archive does not give the sources of $name; --sources DIR takes them from a folder."
    rm -f "$folder"/*.dsc
  fi
  touch "$folder/complete"
}

# unpack_source FOLDER TARGET
unpack_source() {
  local description
  description=$(find "$1" -name '*.dsc')
  if [ -n "$description" ]; then
    dpkg-source --no-check -x "$description" "$2" >&2
  else
    mkdir -p "$2"
    tar -x --strip-components=1 -C "$2" -f "$(find "$1" -name '*.tar.*' ! -name '*.asc')"
  fi
}

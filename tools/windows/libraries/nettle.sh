# SHA-256 and PBKDF2 only: no public keys, so no further library; C instead of assembler, which another system's calling
# convention would break.
source_name=nettle

build() {
  local header
  ./configure --host="$host" CC="$host-gcc-posix" --disable-public-key --disable-assembler --disable-shared --disable-documentation
  make -j "$jobs" libnettle.a
  cp libnettle.a "$prefix/lib/"
  mkdir -p "$prefix/include/nettle"
  for header in *.h; do cp "$header" "$prefix/include/nettle/"; done
}

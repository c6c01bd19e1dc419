# Hashes of the values that a search or a sorting keeps: one header, compiled where it is used.
source_name=xxhash
licences=(debian/copyright LICENSE)

build() {
  install -m 644 xxhash.h "$prefix/include"
}

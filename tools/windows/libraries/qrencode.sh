# The codes on printed reports.
source_name=qrencode
licences=(debian/copyright COPYING)

build() {
  with_cmake . -DWITH_TOOLS=NO -DWITH_TESTS=NO -DWITHOUT_PNG=YES -DBUILD_SHARED_LIBS=NO
}

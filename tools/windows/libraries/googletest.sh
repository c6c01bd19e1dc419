# For the test programs; no part of the setup.
source_name=googletest
licences=(debian/copyright LICENSE)

build() {
  with_cmake . -DBUILD_SHARED_LIBS=OFF
}

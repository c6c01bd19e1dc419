# Icons.
source_name=qtsvg
needs=(qtbase)
licences=(debian/copyright LICENSES/*)

build() {
  with_cmake . -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/cmake" -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF
}

# The command line's options: headers only.
source_name=cli11
licences=(debian/copyright LICENSE)

build() {
  with_cmake . -DCLI11_BUILD_TESTS=OFF -DCLI11_BUILD_EXAMPLES=OFF -DCLI11_BUILD_DOCS=OFF -DCLI11_SINGLE_FILE=OFF
}

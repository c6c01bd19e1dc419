# Spreadsheets.
source_name=libxlsxwriter
needs=(minizip)
licences=(debian/copyright License.txt)

build() {
  with_cmake . -DUSE_SYSTEM_MINIZIP=ON -DBUILD_SHARED_LIBS=OFF -DCMAKE_C_FLAGS=-DUSE_FILE32API
}

# The same version as the building system's Qt, whose tools (moc, rcc, uic) are used. System libraries are the bundled ones but
# SQLite, which Debian takes out of the sources. Direct2D stays on: without it the build is left with half of DirectWrite.
source_name=qt6-base
needs=(sqlite3)

build() {
  local feature off=()
  for feature in vulkan dbus icu openssl concurrent tabletevent jpeg zstd glib fontconfig sql_odbc sql_psql sql_mysql \
    system_zlib system_png system_jpeg system_pcre2 system_harfbuzz system_freetype system_doubleconversion \
    system_libb2 system_textmarkdownreader; do
    off+=("-DFEATURE_$feature=OFF")
  done
  with_cmake . -DINPUT_opengl=no -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/cmake" \
    -DQT_QMAKE_TARGET_MKSPEC=win32-g++ -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DFEATURE_pkg_config=OFF \
    -DFEATURE_system_sqlite=ON "${off[@]}"
}

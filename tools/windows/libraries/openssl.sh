# Encrypted connections to a server, for libpq alone.
source_name=openssl
licences=(LICENSE.txt)

build() {
  ./Configure mingw64 --cross-compile-prefix="$host-" --prefix="$prefix" --libdir=lib CC=gcc-posix no-shared no-tests no-apps no-docs \
    no-engine no-legacy
  make -j "$jobs" build_libs
  make install_dev
}

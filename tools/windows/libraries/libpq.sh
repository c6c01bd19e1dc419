# The server engine's client: its library alone, with the encryption that a server in the network needs.
source_name=postgresql-15
needs=(openssl zlib)
licences=(COPYRIGHT)

build() {
  ./configure --host="$host" CC="$host-gcc-posix" --prefix="$prefix" --without-readline --without-icu --with-openssl \
    CPPFLAGS="-I$prefix/include" LDFLAGS="-L$prefix/lib" LIBS="-lcrypt32 -lws2_32 -lgdi32"
  make -C src/backend generated-headers
  make -j "$jobs" -C src/interfaces/libpq all-shared-lib
  cp src/interfaces/libpq/libpq.dll "$prefix/bin/"
  cp src/interfaces/libpq/libpq.a "$prefix/lib/libpq.dll.a"
  cp src/interfaces/libpq/libpq-fe.h src/interfaces/libpq/libpq-events.h src/include/postgres_ext.h src/include/pg_config_ext.h \
    "$prefix/include/"
}

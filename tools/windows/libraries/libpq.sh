# The client library of a server with the log; loaded when a log on a server is opened.
source_name=postgresql-15
archive_name=postgresql
needs=(openssl)

build() {
  ./configure --host="$host" CC="$host-gcc-posix" --with-ssl=openssl --without-readline --without-zlib \
    --sysconfdir='C:/Program Files/Common Files/postgresql' \
    CPPFLAGS="-I$prefix/include -D_WIN32_WINNT=0x0A00" LDFLAGS="-L$prefix/lib -static-libgcc" LIBS="-lws2_32 -lcrypt32"
  make -C src/backend generated-headers
  make -j "$jobs" -C src/interfaces/libpq all
  cp src/interfaces/libpq/libpq.dll "$prefix/bin/"
  cp src/interfaces/libpq/libpq-fe.h src/include/postgres_ext.h src/include/pg_config_ext.h "$prefix/include/"
}

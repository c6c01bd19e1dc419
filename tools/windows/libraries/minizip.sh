# Writes the packed parts of spreadsheets; without the part that asks Windows for files by narrow names.
source_name=minizip
needs=(zlib)

build() {
  compile_all -I"$prefix/include" -DUSE_FILE32API -- zip.c unzip.c ioapi.c
  "$host-ar" rcs "$prefix/lib/libminizip.a" zip.o unzip.o ioapi.o
  mkdir -p "$prefix/include/minizip"
  cp zip.h unzip.h ioapi.h crypt.h "$prefix/include/minizip/"
}

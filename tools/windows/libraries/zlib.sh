# What the spreadsheets are packed with.
source_name=zlib

build() {
  compile_all -D_FILE_OFFSET_BITS=64 -- *.c
  "$host-ar" rcs "$prefix/lib/libz.a" ./*.o
  cp zlib.h zconf.h "$prefix/include/"
}

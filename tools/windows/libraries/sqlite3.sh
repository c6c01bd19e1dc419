# One file of source with Debian's options; a library of its own, since Qt's help pages are read with it, too.
source_name=sqlite3

build() {
  ./configure --disable-tcl >/dev/null
  make sqlite3.c sqlite3.h
  "$host-gcc-posix" -O2 -shared -o sqlite3.dll sqlite3.c -DSQLITE_API='__declspec(dllexport)' -DSQLITE_THREADSAFE=1 \
    -DSQLITE_SECURE_DELETE -DSQLITE_ENABLE_COLUMN_METADATA -DSQLITE_ENABLE_FTS3 -DSQLITE_ENABLE_FTS3_PARENTHESIS \
    -DSQLITE_ENABLE_FTS3_TOKENIZER -DSQLITE_ENABLE_FTS4 -DSQLITE_ENABLE_FTS5 -DSQLITE_ENABLE_RTREE -DSQLITE_SOUNDEX \
    -DSQLITE_ENABLE_UNLOCK_NOTIFY -DSQLITE_ENABLE_DBSTAT_VTAB -DSQLITE_ENABLE_UPDATE_DELETE_LIMIT \
    -DSQLITE_ENABLE_LOAD_EXTENSION -DSQLITE_ENABLE_JSON1 -DSQLITE_LIKE_DOESNT_MATCH_BLOBS -DSQLITE_ENABLE_SESSION \
    -DSQLITE_ENABLE_PREUPDATE_HOOK -DSQLITE_ENABLE_STMTVTAB -DSQLITE_MAX_VARIABLE_NUMBER=250000 \
    -Wl,--out-implib,libsqlite3.dll.a -static-libgcc
  cp sqlite3.dll "$prefix/bin/"
  cp libsqlite3.dll.a "$prefix/lib/"
  cp sqlite3.h sqlite3ext.h "$prefix/include/" 2>/dev/null || cp sqlite3.h src/sqlite3ext.h "$prefix/include/"
}

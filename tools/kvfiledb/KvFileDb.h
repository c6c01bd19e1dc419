#pragma once

// How its functions are called, where that differs.
#ifndef KVFILEDB_CALL
#define KVFILEDB_CALL
#endif

/// What the imaging suite's library KVFILEDB.DLL exports.
extern "C" {

/// 0 when the suite's database is ready.
int KVFILEDB_CALL FDB_Open(void);

/// Writes the suite's data folder, zero-terminated and with its trailing separator, to `buffer`, of which it
/// uses at most `size` bytes. The other arguments are 0. 0 on success.
int KVFILEDB_CALL FDB_GetDataBaseInfo(char* buffer, int size, int, int, int);

int KVFILEDB_CALL FDB_Close(void);
}

#pragma once

/// What the imaging suite's library KVFILEDB.DLL exports.
extern "C" {

/// 0 when the suite's database is ready.
int FDB_Open(void);

/// Writes the suite's data folder, zero-terminated and with its trailing separator, to `buffer`, of which it
/// uses at most `size` bytes. The other arguments are 0. 0 on success.
int FDB_GetDataBaseInfo(char* buffer, int size, int, int, int);

int FDB_Close(void);
}

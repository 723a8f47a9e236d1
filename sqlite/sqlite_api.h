// sqlite_api.h -- SQLite's extension interface for every unit of the
// extension.  Calls go through the routine table that SQLite hands to the
// entry point (extension.cpp keeps it), never to a libsqlite3 linked in, so
// the extension works in any program that loads it.
#ifndef VXJSON_SQLITE_API_H
#define VXJSON_SQLITE_API_H

#include <sqlite3ext.h>

SQLITE_EXTENSION_INIT3

#endif

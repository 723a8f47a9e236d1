// The entry point SQLite calls when it loads the extension: one connection
// state, then every family's functions registered over it.
#include <sqlite3ext.h>
SQLITE_EXTENSION_INIT1

#include "registry.h"
#include "row.h"

namespace vxsql {

namespace {

// Deterministic and free of side effects: SQLite may evaluate a call with
// constant arguments once, and use them in indexes, views and triggers.
// The functions read the JSON subtype of their arguments.
constexpr int FUNCTION_FLAGS =
    SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS | SQLITE_SUBTYPE;

int register_one(sqlite3 *db, connection *c, const char *name, int nargs, sql_function fn) {
    // SQLite calls the destructor when the registration fails, too.
    connection_retain(c);
    return sqlite3_create_function_v2(db, name, nargs, FUNCTION_FLAGS, c, fn, nullptr, nullptr,
                                      connection_release);
}

int register_family(sqlite3 *db, connection *c, std::span<const function_def> family) {
    for (const function_def &f : family) {
        if (f.max_args < 0) {
            if (int rc = register_one(db, c, f.name, -1, f.call)) return rc;
            continue;
        }
        for (int n = f.min_args; n <= f.max_args; n++)
            if (int rc = register_one(db, c, f.name, n, f.call)) return rc;
    }
    return SQLITE_OK;
}

int register_all(sqlite3 *db, char **err) {
    connection *c = connection_create();
    if (!c) return SQLITE_NOMEM;
    int rc = SQLITE_OK;
    for (auto family : {common_functions(), pg_functions(), pg_path_functions(), mysql_functions(),
                        mysql_path_functions(), standard_functions()})
        if (rc == SQLITE_OK) rc = register_family(db, c, family);
    if (rc != SQLITE_OK && err) *err = sqlite3_mprintf("vxjson: cannot register the functions");
    connection_release(c);
    return rc;
}

} // namespace

} // namespace vxsql

// `.load ./vxjson_sqlite` finds this name from the file name.
extern "C" __attribute__((visibility("default"))) int
sqlite3_vxjsonsqlite_init(sqlite3 *db, char **err, const sqlite3_api_routines *api) {
    SQLITE_EXTENSION_INIT2(api);
    return vxsql::register_all(db, err);
}

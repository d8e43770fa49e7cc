// SQLite's functions: linked, or in a loadable extension those of the program that loads it.
#pragma once

#ifdef NOMIRA_SQLITE_EXTENSION
#include <sqlite3ext.h>
extern const sqlite3_api_routines* sqlite3_api;
#else
#include <sqlite3.h>
#endif

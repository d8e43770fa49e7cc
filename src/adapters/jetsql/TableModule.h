// The tables of an Access file as virtual tables of an SQLite connection: read, written, found by
// the file's own indexes, and with the connection's transactions as the file's.
//
// CREATE VIRTUAL TABLE name USING module([file,] table): a file is named where the module was not
// made for one.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "adapters/jetsql/AccessSession.h"
#include "adapters/jetsql/Sqlite.h"

namespace nomira::jetsql {

// Makes the module for the tables of one file known to the connection. Returns SQLite's code.
int RegisterModule(sqlite3* handle, const char* sModule, std::shared_ptr<AccessSession> session);
// The same for tables of any files, each named by its first argument. Each transaction goes into
// its file at once.
int RegisterModuleForAnyFile(sqlite3* handle, const char* sModule);

// A table of a file, for the statement that makes it a virtual one.
struct NamedTable {
    std::u16string sName;
    // A text that is another one once the table is no longer the same for SQL.
    std::string sShape;
};
// The local tables of the file. Raises jet::Failure; tables of a kind that can't be read are left
// out, system tables that are damaged too.
std::vector<NamedTable> LocalTables(jet::AccessFile& file);
// The statement, for a temporary table of the same name behind `sPrefix`. `sFile` is empty for a
// module that was made for one file.
std::string CreateStatement(const std::string& sModule, const std::string& sFile,
                            const NamedTable& table, std::u16string_view sPrefix = {});

// SQLite's code for a failure.
int ResultOf(jet::FailureKind kind);

}  // namespace nomira::jetsql

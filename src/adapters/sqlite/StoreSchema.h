// The two tables of a message database, as this system makes them.
#pragma once

#include <filesystem>

namespace nomira::sqlite {

// What a new message database's file is.
enum class StoreFormat {
    Sqlite,
    Jet3,  // Access 97, the one that the controller software writes
    Jet4,  // Access 2000 to 2003
};

// The tables and their indexes in an SQLite file; those in an Access file hold the same.
//
// Key_id is never given out twice, so that whoever remembers the number of a deleted item can't
// hit another one. A message goes with its item. Neither the pair of key and module nor the pair
// of item and language is declared unique: a store that came from elsewhere may hold such pairs.
inline constexpr const char* kStoreSchema =
    "CREATE TABLE Items("
    "Key_id INTEGER PRIMARY KEY AUTOINCREMENT, Module TEXT, KeyString TEXT);"
    "CREATE TABLE Messages("
    "Key_id INTEGER NOT NULL REFERENCES Items(Key_id) ON DELETE CASCADE,"
    " Language_id INTEGER NOT NULL, String TEXT);"
    "CREATE INDEX ItemsByKey ON Items(KeyString, Module);"
    "CREATE INDEX MessagesByKey ON Messages(Key_id, Language_id);";

// Makes a new, empty store. Raises EngineFailure if the file exists or can't be made, and then
// leaves nothing behind.
void CreateStore(const std::filesystem::path& path, StoreFormat format = StoreFormat::Sqlite);

// The same in an empty file that is there already.
void FillStore(const std::filesystem::path& path, StoreFormat format);

}  // namespace nomira::sqlite

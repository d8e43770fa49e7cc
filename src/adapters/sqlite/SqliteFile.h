// A database that is an SQLite file.
//
// At rest the file is whole and alone: in rollback-journal mode, with no other file beside it, and
// with no lock on it. The first write puts it into write-ahead mode, in which every row commits by
// itself without waiting for the disk and a killed process loses nothing that was committed; Rest
// puts it back. Where another process keeps the file from changing mode, writes go through the
// rollback journal, which survives a killed process as well.
#pragma once

#include "adapters/sqlite/Database.h"

namespace nomira::sqlite {

class SqliteFile : public Database {
  public:
    // Opens the existing file that was looked at at the path, for reading only if nobody may
    // write it. Doesn't look into it; CheckReadable does. Raises EngineFailure.
    SqliteFile(std::filesystem::path path, const FileIdentity& identity);

    // Whether the file calls itself an Access file. Asked through the handle: closing any other
    // descriptor of the file would end all locks that this process has on it.
    bool IsAccessFile() const;

    void MakeCompacted(const std::filesystem::path& path, int nEngineType) override;
    // Writes a compacted copy into the empty file at `path`. Raises EngineFailure.
    void CopyCompacted(const std::filesystem::path& path);

  protected:
    bool IsBeingWritten() const override;
    void CheckContents() override;
    // A write-ahead log takes changes that the file doesn't show.
    bool ShowsItsChanges() override { return !IsWriteAhead(); }
    void PrepareToWrite() override;
    bool IsReadOnly() const override;
    bool PutToRest() override;

  private:
    bool IsWriteAhead();

    StatementPtr m_journalMode;
    bool m_bJournalChosen = false;
};

}  // namespace nomira::sqlite

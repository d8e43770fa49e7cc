// A database that is an Access file: the statements are SQLite's, over virtual tables on the file.
//
// At rest nobody holds the file and all of it is in the file itself. While somebody writes, what is
// committed stands in the file's journal, so that each row commits by itself without waiting for
// the disk and a killed process loses nothing that was committed; Rest brings it into the file.
// Two connections of one process share one open file: what one of them has written is seen by the
// other at once, also ahead of a commit.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "adapters/jetsql/TableModule.h"
#include "adapters/sqlite/Database.h"

namespace nomira::sqlite {

class JetDatabase : public Database {
  public:
    // For the existing file that was looked at at the path; doesn't look into it.
    JetDatabase(std::filesystem::path path, const FileIdentity& identity);
    ~JetDatabase() override;

    void MakeCompacted(const std::filesystem::path& path, int nEngineType) override;

  protected:
    bool IsBeingWritten() const override;
    void CheckContents() override;
    bool ShowsItsChanges() override { return true; }
    void PrepareToWrite() override;
    bool IsReadOnly() const override;
    bool PutToRest() override;

  private:
    void DeclareTables(const std::vector<jetsql::NamedTable>& tables, const std::string& sShape);

    std::shared_ptr<jetsql::AccessSession> m_session;
    std::filesystem::path m_journal;  // there while somebody writes the file
    std::string m_sShape;             // of all tables, as the handle knows them
    std::uint64_t m_nReading = 0;     // of the file, by which they were compared with it
};

}  // namespace nomira::sqlite

// One SQLite connection's hold on one Access file, which all its virtual tables on that file share.
// The file is opened when it is first needed.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "adapters/jetsql/OpenFile.h"

namespace nomira::jetsql {

// Rows that go with a row of another table where the file has no relationship that says so.
struct Cascade {
    std::u16string sParentTable;
    std::u16string sParentColumn;
    std::u16string sChildTable;
    std::u16string sChildColumn;
};

// When what was committed goes from the journal into the file itself.
enum class RestTime {
    WhenTold,    // many small transactions follow each other quickly
    EachCommit,  // the file is whole, and nobody's, behind each transaction
};

class AccessSession {
  public:
    AccessSession(std::filesystem::path path, std::vector<Cascade> cascades,
                  RestTime restTime = RestTime::WhenTold);
    ~AccessSession();
    AccessSession(const AccessSession&) = delete;
    AccessSession& operator=(const AccessSession&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    // All of these open the file if it isn't open, and raise jet::Failure.
    OpenFile& Open();
    jet::AccessFile& File() { return Open().File(); }
    const std::shared_ptr<OpenFile>& Shared() const { return m_file; }

    // Brings what was committed to the disk, so that nobody holds the file; a transaction that is
    // still open is taken back. Raises InputOutput.
    void Rest();

    // The transaction of the connection. Its marks are numbered as SQLite numbers its savepoints;
    // each of the tables tells of the same ones.
    void Begin() { Open().Begin(this); }
    void Commit();
    void End();
    void Mark(int nMark);
    void Release(int nMark);
    void RollbackTo(int nMark);

    // Work that is done whole or not at all, inside a transaction. Raises what it raises.
    template <typename Work>
    void Whole(Work work) {
        const int nMark = m_nMarks;
        Mark(nMark);
        try {
            work();
        } catch (...) {
            RollbackTo(nMark);
            Release(nMark);
            throw;
        }
        Release(nMark);
    }

    // Deletes the row, with what goes with it. Nothing if it is gone.
    void DeleteRow(jet::Table& table, std::u16string_view sTable, jet::RowPlace place);

  private:
    void DeleteRow(jet::Table& table, std::u16string_view sTable, jet::RowPlace place, int nDepth);
    void DeleteChildren(jet::Table& parent, const Cascade& cascade, jet::RowPlace place,
                        int nDepth);

    std::filesystem::path m_path;
    std::vector<Cascade> m_cascades;
    RestTime m_restTime;
    std::shared_ptr<OpenFile> m_file;
    int m_nMarks = 0;
};

// A row as the number by which SQL tells it from others, and back. False for a number that can be
// no row's.
std::int64_t RowIdOf(jet::RowPlace place);
bool PlaceOf(std::int64_t nRowId, jet::RowPlace& place);

}  // namespace nomira::jetsql

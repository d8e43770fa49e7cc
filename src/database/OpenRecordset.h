// A recordset for the length of one operation: open from its making on, closed on every way out.
#pragma once

#include <memory>

#include "database/DatabaseEngine.h"

namespace nomira {

class OpenRecordset {
  public:
    // Opens `sSource` as Recordset::Open does, with its option unspecified. Raises like that, and
    // ObjectNotSet for no connection.
    OpenRecordset(TextView sSource, Connection* connection, CursorKind cursor, LockKind lock);
    // Closes a recordset that is still open, and keeps a failure of that to itself.
    ~OpenRecordset();
    OpenRecordset(const OpenRecordset&) = delete;
    OpenRecordset& operator=(const OpenRecordset&) = delete;

    Recordset* operator->() const { return m_recordset.get(); }
    Recordset& operator*() const { return *m_recordset; }

  private:
    std::unique_ptr<Recordset> m_recordset;
};

// A column's value as the program's own types take it. Raise TypeMismatch for Null and for what
// is no such value, ToKeyId also Overflow beyond 32 bits.
std::int32_t ToKeyId(const FieldValue& value);
Text ToText(FieldValue value);

}  // namespace nomira

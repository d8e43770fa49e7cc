// A public service beside adoModul: a data control's recordset, opened on a file of its own. The
// program's own data path does not go through it.
#pragma once

#include <memory>

#include "database/DatabaseEngine.h"
#include "langtools/Text.h"

namespace nomira {

// A control on a form that shows the rows of a recordset.
class DataControl {
  public:
    virtual ~DataControl() = default;

    // The control's own recordset, closed until somebody opens it; may be nullptr.
    virtual nomira::Recordset* Recordset() = 0;
};

class AdoClass {
  public:
    // Opens the control's recordset on the rows that `sSql` gives, so that the current one can be
    // changed, and returns it. On any failure the result is nullptr, and a connection that the
    // recordset was given already is closed.
    Recordset* OpenDataSource(TextView sDatabasePath, DataControl& dataControl, TextView sSql);

    // Closes the connection, and the recordset with it; nothing happens without an open one.
    void CloseDataSource();

  private:
    void OpenConnection(TextView sDatabasePath);

    std::unique_ptr<Connection> m_connection;
    Recordset* m_recordset = nullptr;  // the data control's
    bool m_bActiveConnection = false;  // the recordset has been given the connection
};

}  // namespace nomira

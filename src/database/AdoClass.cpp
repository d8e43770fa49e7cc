#include "database/AdoClass.h"

#include "langtools/RuntimeError.h"

namespace nomira {

Recordset* AdoClass::OpenDataSource(TextView sDatabasePath, DataControl& dataControl,
                                    TextView sSql) {
    try {
        m_bActiveConnection = false;
        m_connection = TheDatabaseEngine().CreateConnection();
        m_recordset = dataControl.Recordset();
        OpenConnection(sDatabasePath);
        if (m_recordset == nullptr) Raise(ErrorNumber::ObjectNotSet);
        m_bActiveConnection = true;
        m_recordset->Open(sSql, *m_connection, CursorKind::Keyset, LockKind::Optimistic,
                          kOptionUnspecified);
        return m_recordset;
    } catch (const RuntimeError&) {
        CloseDataSource();
        return nullptr;
    }
}

void AdoClass::CloseDataSource() {
    try {
        if (m_bActiveConnection) m_connection->Close();
        m_bActiveConnection = false;
    } catch (const RuntimeError&) {
        // Ends here: there is nobody to tell.
    }
}

void AdoClass::OpenConnection(TextView sDatabasePath) {
    m_connection->SetProvider(u"Microsoft.Jet.OLEDB.4.0");
    m_connection->SetConnectionText(u"Data Source=" + Text(sDatabasePath));
    m_connection->Open(u"", u"admin", u"", kOptionUnspecified);
}

}  // namespace nomira

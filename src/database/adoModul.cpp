#include "database/adoModul.h"

#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"

namespace nomira {

std::unique_ptr<Connection> g_Connection;

namespace {

const LongTextSource* g_source = nullptr;

const OnProgramReset kReset([] {
    g_Connection.reset();
    g_source = nullptr;
});

// The default account of such a file.
constexpr TextView kUser = u"admin";
constexpr TextView kPassword;

void OpenFile(Connection& connection, TextView sPath) {
    connection.SetConnectionText(u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=" + Text(sPath) +
                                 u";DefaultDir=C:\\Temp");
    connection.Open(u"", kUser, kPassword, kOptionUnspecified);
}

}  // namespace

bool OpenDatabase(TextView sPath) {
    try {
        if (g_Connection && g_Connection->State() == kStateOpen) CloseDatabase();
        g_Connection = TheDatabaseEngine().CreateConnection();
        OpenFile(*g_Connection, sPath);
        if (g_Connection->State() == kStateOpen) return true;
    } catch (const RuntimeError&) {
        // Answered below, as a connection that isn't open is.
    }
    g_Connection.reset();
    return false;
}

void CloseDatabase() {
    if (!g_Connection) return;
    try {
        g_Connection->Close();
    } catch (const RuntimeError&) {
        // Dropped all the same.
    }
    g_Connection.reset();
}

void SetLongTextSource(const LongTextSource* source) {
    g_source = source;
}

bool ReadLongText(Text& sText, TextView sModule, TextView sKey) {
    if (g_source != nullptr) return g_source->Read(sText, sModule, sKey);
    try {
        const std::unique_ptr<Connection> connection = TheDatabaseEngine().CreateConnection();
        OpenFile(*connection, kLongTextDatabase);
        const std::int32_t nKeyId = FindKeyId(sModule, sKey, connection.get());
        ReadMessageString(nKeyId, sText, connection.get());
        connection->Close();
        return true;
    } catch (const RuntimeError&) {
        return false;
    }
}

}  // namespace nomira

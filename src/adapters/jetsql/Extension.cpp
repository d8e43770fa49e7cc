// The tables of Access files for any program that loads SQLite extensions: docs/access-files.md.
#include <exception>
#include <string>

#include "adapters/jet/Checker.h"
#include "adapters/jetsql/TableModule.h"
#include "langtools/Utf8.h"

#ifndef NOMIRA_SQLITE_EXTENSION
#error "this source belongs to the loadable extension alone"
#endif

SQLITE_EXTENSION_INIT1

namespace nomira::jetsql {
namespace {

constexpr const char* kModule = "nomira_mdb";

void GiveFailure(sqlite3_context* context, const char* sWords) {
    sqlite3_result_error(context, sWords, -1);
}

// Runs a function's work; nothing may fly through SQLite.
template <typename Work>
void Guarded(sqlite3_context* context, Work work) noexcept {
    try {
        work();
    } catch (const std::exception& failure) {
        GiveFailure(context, failure.what());
    }
}

std::string TextOf(sqlite3_value* value) {
    const auto* sText = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return sText == nullptr ? std::string() : std::string(sText);
}

bool IsUsers(jet::AccessFile& file, std::u16string_view sName) {
    for (const jet::CatalogueEntry& entry : file.Catalogue())
        if (entry.IsTable() && entry.sName == sName) return !entry.IsSystem();
    return false;
}

// nomira_mdb_attach(file [, prefix]): makes temporary tables of all tables of the file, and gives
// how many.
void Attach(sqlite3_context* context, int nArguments, sqlite3_value** arguments) {
    Guarded(context, [&] {
        sqlite3* handle = sqlite3_context_db_handle(context);
        const std::string sFile = TextOf(arguments[0]);
        const std::u16string sPrefix =
            nArguments > 1 ? FromUtf8(TextOf(arguments[1])) : std::u16string();
        AccessSession session(sFile, {});
        int nMade = 0;
        for (const NamedTable& table : LocalTables(session.File())) {
            if (!IsUsers(session.File(), table.sName)) continue;
            const std::string sStatement = CreateStatement(kModule, sFile, table, sPrefix);
            if (sqlite3_exec(handle, sStatement.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
                return GiveFailure(context, sqlite3_errmsg(handle));
            ++nMade;
        }
        sqlite3_result_int(context, nMade);
    });
}

// nomira_mdb_check(file): "ok", or what is wrong with it, a line each.
void Check(sqlite3_context* context, int /*nArguments*/, sqlite3_value** arguments) {
    Guarded(context, [&] {
        jet::AccessFile file(jet::FilePages::Open(TextOf(arguments[0]), jet::OpenMode::ReadOnly));
        std::string sLines;
        for (const jet::Finding& finding : jet::CheckFile(file))
            if (!finding.bWarning)
                sLines += "page " + std::to_string(finding.nPage) + ": " + finding.sText + '\n';
        if (sLines.empty()) sLines = "ok";
        sqlite3_result_text(context, sLines.c_str(), -1, SQLITE_TRANSIENT);
    });
}

struct Function {
    const char* sName;
    int nArguments;
    void (*call)(sqlite3_context*, int, sqlite3_value**);
};
constexpr Function kFunctions[]{
    {"nomira_mdb_attach", 1, Attach},
    {"nomira_mdb_attach", 2, Attach},
    {"nomira_mdb_check", 1, Check},
};

}  // namespace
}  // namespace nomira::jetsql

// The name that SQLite makes of the file's.
extern "C" __attribute__((visibility("default"))) int sqlite3_nomiramdb_init(
    sqlite3* handle, char** /*sWords*/, const sqlite3_api_routines* api) {
    SQLITE_EXTENSION_INIT2(api);
    using namespace nomira::jetsql;
    int nResult = RegisterModuleForAnyFile(handle, kModule);
    // Not for a schema that came from elsewhere: they read files by name.
    for (const Function& function : kFunctions)
        if (nResult == SQLITE_OK)
            nResult = sqlite3_create_function_v2(handle, function.sName, function.nArguments,
                                                 SQLITE_UTF8 | SQLITE_DIRECTONLY, nullptr,
                                                 function.call, nullptr, nullptr, nullptr);
    return nResult;
}

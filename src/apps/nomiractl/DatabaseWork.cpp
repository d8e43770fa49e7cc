#include "apps/nomiractl/DatabaseWork.h"

#include <fmt/format.h>

#include <string>
#include <utility>

#include "apps/nomiractl/AccessLook.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/StoreFormats.h"
#include "apps/nomiractl/Words.h"
#include "database/OpenRecordset.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "langtools/Utf8.h"

namespace nomira::companion {
namespace {

struct Remedy {
    TextView sEngineWords;  // a part of what the engine says
    const char* sWords;
};

constexpr Remedy kRemedies[]{
    {u"locked", "; another program uses it, try again when that is done"},
    {u"another program keeps", "; try again when that is done"},
    {u"open in Access", "; close it there and try again"},
    {u"not a database", "; make one with: nomiractl db create PATH"},
    {u"no such table", "; make a message database with: nomiractl db create PATH"},
    {u"disk is full", "; make room on the disk and try again"},
};

std::vector<Text> AccessFindings(const std::filesystem::path& path) {
    std::vector<Text> findings;
    for (const std::string& sProblem : CheckAccessFile(path).problems)
        findings.push_back(FromUtf8(sProblem));
    return findings;
}

const char* RemedyFor(TextView sEngineWords) {
    for (const Remedy& remedy : kRemedies)
        if (InStr(sEngineWords, remedy.sEngineWords) > 0) return remedy.sWords;
    return "";
}

// The engine's own check of the file: one row per finding, or the one word of a sound file.
std::vector<Text> Findings() {
    std::vector<Text> findings;
    const OpenRecordset rows(u"PRAGMA integrity_check", g_Connection.get(), CursorKind::Static,
                             LockKind::ReadOnly);
    for (; !rows->Eof(); rows->MoveNext())
        if (Text sFinding = ToText(rows->Field(u"integrity_check")); sFinding != u"ok")
            findings.push_back(std::move(sFinding));
    return findings;
}

}  // namespace

template <typename Work>
decltype(auto) DatabaseWork::InWords(Work work) {
    try {
        return work();
    } catch (const RuntimeError& error) {
        Refuse(error.Description());
    }
}

DatabaseWork::DatabaseWork(std::filesystem::path path, DatabaseEngine& engine, DatabaseUse use)
    : m_path((CheckDatabase(path, use), std::move(path))), m_engine(engine) {
    if (!OpenDatabase(kLongTextDatabase))
        Refuse(m_engine.Failure().value_or(u"the database can't be opened"));
    CloseDatabase();
    if (use == DatabaseUse::Write) InWords([this] { m_engine.Begin(); });
}

std::vector<Item> DatabaseWork::ReadItems() {
    return InWords([] {
        OpenDatabase(kLongTextDatabase);
        std::vector<Item> items = companion::ReadItems();
        CloseDatabase();
        return items;
    });
}

Rows DatabaseWork::ReadRows() {
    return InWords([] {
        OpenDatabase(kLongTextDatabase);
        Rows rows = companion::ReadRows();
        CloseDatabase();
        return rows;
    });
}

void DatabaseWork::ChangeRows(const std::vector<ItemChange>& changes) {
    if (!AreBefore(changes, ReadRows()))
        throw Refusal(
            fmt::format("{}: what is to be changed there has been changed by others"
                        " meanwhile; nothing was changed",
                        m_path.string()));
    InWords([&] {
        OpenDatabase(kLongTextDatabase);
        companion::ChangeRows(changes);
        CloseDatabase();
    });
    if (!AreAfter(changes, ReadRows())) Refuse(u"the database doesn't keep what is written");
}

std::vector<Text> DatabaseWork::FindDamage() {
    if (RequireFormat(m_path) != StoreFormat::Sqlite) return AccessFindings(m_path);
    return InWords([] {
        OpenDatabase(kLongTextDatabase);
        std::vector<Text> findings = Findings();
        CloseDatabase();
        return findings;
    });
}

bool DatabaseWork::HasLostMessages() {
    return InWords([] {
        OpenDatabase(kLongTextDatabase);
        const OpenRecordset rows(
            u"SELECT Messages.Key_id FROM Messages LEFT JOIN Items ON"
            u" Messages.Key_id = Items.Key_id WHERE Items.Key_id IS NULL",
            g_Connection.get(), CursorKind::Static, LockKind::ReadOnly);
        const bool bSome = !rows->Eof();
        rows->Close();
        CloseDatabase();
        return bSome;
    });
}

void DatabaseWork::RequireNoFailure() const {
    if (m_engine.Failure()) Refuse(*m_engine.Failure());
}

void DatabaseWork::Commit() {
    InWords([this] { m_engine.Commit(); });
}

void DatabaseWork::Refuse(TextView sEngineWords) const {
    throw Refusal(
        fmt::format("{}: {}{}", m_path.string(), Shown(sEngineWords), RemedyFor(sEngineWords)),
        ExitCode::Database);
}

}  // namespace nomira::companion

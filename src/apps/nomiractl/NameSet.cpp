#include "apps/nomiractl/NameSet.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "apps/nomiractl/LongTexts.h"
#include "apps/nomiractl/ProgramRewrite.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Words.h"
#include "conversion/KeyForms.h"
#include "conversion/TextImport.h"
#include "database/DatabaseEngine.h"
#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "userprogram/FoldHeader.h"
#include "userprogram/FoldObserver.h"

namespace nomira::companion {
namespace {

// An engine without a database: every look-up fails, and the rewriter leaves the line as it is.
class NoDatabaseEngine : public DatabaseEngine {
  public:
    explicit NoDatabaseEngine(DatabaseEngine& inner) : m_inner(inner) { SetDatabaseEngine(this); }
    ~NoDatabaseEngine() override { SetDatabaseEngine(&m_inner); }
    NoDatabaseEngine(const NoDatabaseEngine&) = delete;
    NoDatabaseEngine& operator=(const NoDatabaseEngine&) = delete;

    std::unique_ptr<Connection> CreateConnection() override { Raise(ErrorNumber::EngineFailure); }
    std::unique_ptr<Recordset> CreateRecordset() override { Raise(ErrorNumber::EngineFailure); }
    void CompactDatabase(TextView, TextView) override { Raise(ErrorNumber::EngineFailure); }

  private:
    DatabaseEngine& m_inner;
};

// Collects what is looked up while it lives. A number without a name has none in the line; what
// the core compares it with is the name of an earlier one.
class NameWatch : public FoldObserver {
  public:
    NameWatch(ProgramNames& program, const std::int64_t& nLine)
        : m_program(program), m_nLine(nLine) {
        SetFoldObserver(this);
    }
    ~NameWatch() override { SetFoldObserver(nullptr); }
    NameWatch(const NameWatch&) = delete;
    NameWatch& operator=(const NameWatch&) = delete;

    void HeaderFound(FoldKind) override { m_bSymbolOnly = false; }
    void SymbolOnlyFound() override { m_bSymbolOnly = true; }
    void NameFound(const FoldName& name) override {
        m_program.names.push_back({NameKey(name.sModule, name.sKey),
                                   m_bSymbolOnly ? Text() : Text(name.sOldName), m_nLine});
    }

  private:
    ProgramNames& m_program;
    const std::int64_t& m_nLine;
    bool m_bSymbolOnly = false;
};

}  // namespace

NameKey::NameKey(TextView sKeyModule, TextView sKeyText)
    : sModule(sKeyModule), sKey(sKeyText), m_nClass(ClassRow(sKeyModule, sKeyText)) {}

void AddName(NameSet& names, const NameKey& key, NameUse use) {
    std::vector<NameUse>& uses = names[key];
    const bool bKnown = std::any_of(uses.begin(), uses.end(), [&use](const NameUse& known) {
        return known.sText == use.sText;
    });
    if (!bKnown) uses.push_back(std::move(use));
}

NameSet NamesOfTextFile(const std::filesystem::path& file) {
    NameSet names;
    const KeyForms forms;
    const auto input = TheFiles().OpenForInput(CorePath(file));
    for (std::int64_t nLine = 1; !input->AtEnd(); ++nLine) {
        input->ReadLine(g_sLine);
        const KeyForm* form = TakeTextLine(forms);
        if (!form) continue;
        const Text sText = g_vLongName == kEmptyMarker ? Text() : g_vLongName;
        names[NameKey(form->pClass->sModule, g_vSymbol)] = {{sText, file.string(), nLine}};
    }
    return names;
}

ProgramNames NamesOfProgram(const std::filesystem::path& file) {
    const std::string bytes = ReadProgram(file);
    ProgramNames program;
    std::int64_t nLine = 0;
    const NoDatabaseEngine engine(TheDatabaseEngine());
    const NameWatch watch(program, nLine);
    for (const ProgramLine& line : CutLines(bytes)) {
        ++nLine;
        g_sLine = SystemCodePage().Decode(line.body);
        try {
            RewriteFoldLine();
        } catch (const RuntimeError&) {
            g_Parser() = CParser();  // one that has overflowed stays so
            program.unreadable.push_back(nLine);
        }
    }
    return program;
}

}  // namespace nomira::companion

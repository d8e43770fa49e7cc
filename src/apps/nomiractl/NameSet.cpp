#include "apps/nomiractl/NameSet.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "apps/nomiractl/InOrder.h"
#include "apps/nomiractl/LongTexts.h"
#include "apps/nomiractl/NameTable.h"
#include "apps/nomiractl/ProgramRewrite.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Words.h"
#include "conversion/KeyForms.h"
#include "conversion/TextImport.h"
#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "userprogram/FoldHeader.h"
#include "userprogram/FoldObserver.h"

namespace nomira::companion {
namespace {

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

namespace {

ProgramNames NamesOfProgram(const std::filesystem::path& file) {
    const std::string bytes = ReadProgram(file);
    ProgramNames program;
    std::int64_t nLine = 0;
    const NameWatch watch(program, nLine);
    const bool bPlain = SystemCodePage().IsPlain();
    for (const ProgramLine& line : CutLines(bytes)) {
        ++nLine;
        if (bPlain && !MayBeFoldHeader(line.body)) continue;
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

}  // namespace

void NamesOfPrograms(
    const std::vector<std::filesystem::path>& files, std::size_t nThreads,
    const std::function<void(const std::filesystem::path&, const ProgramNames&)>& take,
    const std::function<void(const std::filesystem::path&, const Refusal&)>& refused) {
    struct Found {
        std::size_t n;
        ProgramNames names;
        std::optional<Refusal> refusal;
    };
    const NoNames none;
    InOrder(
        files.size(), nThreads,
        [&](std::size_t n) -> Found {
            try {
                return {n, NamesOfProgram(files[n]), std::nullopt};
            } catch (const Refusal& refusal) {
                return {n, {}, refusal};
            }
        },
        [&](const Found& found) {
            if (found.refusal)
                refused(files[found.n], *found.refusal);
            else
                take(files[found.n], found.names);
        });
}

}  // namespace nomira::companion

#include <fmt/format.h>

#include <algorithm>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseRun.h"
#include "apps/nomiractl/ImportPass.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/PrivateFolder.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/TextForm.h"
#include "apps/nomiractl/Words.h"
#include "frame/Settings.h"
#include "langtools/CodePage.h"

namespace nomira::companion {
namespace {

bool EndsLine(char16_t c) {
    return c == u'\r' || c == u'\n';
}

void RequireNoFlaws(TextView sText, const std::string& sOf, TextEncoding encoding) {
    const std::vector<TextFlaw> flaws = FlawsOfLine(sText, 1, encoding, SystemCodePage());
    if (flaws.empty()) return;
    throw Refusal(fmt::format("{}: character {}: {}{}", sOf, flaws.front().nColumn,
                              InWords(flaws.front(), SystemCodePage()),
                              flaws.front().flaw == Flaw::NotUtf8
                                  ? "; --encoding code-page takes it as the code page's"
                                  : ""));
}

// The line of a text file that says the same, in its code page.
std::string LineOf(const Options& options) {
    const CodePage& page = SystemCodePage();
    const TextEncoding encoding = FormOf(options, {.encoding = TextEncoding::Utf8}).encoding;
    const Text sKey = posix::FromNative(options.key);
    const Text sText = DecodeLine(options.text, encoding, page);
    const Text sLine = sKey + u" " + sText;
    if (std::any_of(sLine.begin(), sLine.end(), EndsLine))
        throw Refusal(fmt::format("{}: a text has one line", Shown(sLine)));
    if (options.key.find_first_of(" \t") != std::string::npos || options.key.empty())
        throw Refusal(fmt::format("\"{}\": no key", options.key));
    RequireNoFlaws(sKey, "the key", TextEncoding::Utf8);
    RequireNoFlaws(sText, options.key, encoding);
    return page.Encode(sLine) + "\r\n";
}

// The faithful import of that one line, which knows all rules of keys and texts.
ImportReport ImportLine(const Options& options, const Rows& rows, const std::string& sLine) {
    const PrivateFolder folder;
    Options import = options;
    import.file = folder.Path() / "line.txt";
    import.bOverwrite = false;
    ReplaceFile(import.file, sLine);
    ImportReport report{.sFile = {}, .sDatabase = {}, .bCustomer = IsCustomerVw()};
    RunPasses(import, rows, report);
    return report;
}

void RequireStored(const ImportReport& report, const Options& options) {
    if (!report.passedOver.empty())
        throw Refusal(fmt::format("{}: not taken: {}", options.key,
                                  ReasonInWords(report.passedOver.front().reason)));
    if (!report.failed.empty())
        throw Refusal(fmt::format("{}: {}", options.key,
                                  FailureReason(report, report.failed.front().outcome)),
                      ExitCode::Database);
}

}  // namespace

ExitCode SetText(const Options& options, Streams streams) {
    const InterruptWatch watch;
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    const std::string sLine = LineOf(options);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Write);
    const Rows before = database.ReadRows();
    RequireStored(ImportLine(options, before, sLine), options);
    database.RequireNoFailure();
    Plan plan = PlanOnDatabase(options, machine, Difference(before, database.ReadRows()));
    EndDatabaseRun(plan, before, {}, options, journal, machine, database);
    ShowDatabaseRun(plan, options, streams.out);
    return ExitCode::Done;
}

}  // namespace nomira::companion

// What the tests of both directions stand on: a machine in memory, a store of its own, and a
// pendant form whose view counts the progress steps.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "database/adoModul.h"
#include "langtools/Utf8.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira::testing {

using Rows = std::vector<std::string>;

// The batch run's form, as far as the passes know it.
class LabelForm : public Form {
  public:
    LabelForm() : Form(u"StdForm") { Add<Label>(u"Information"); }
};

// A pendant form that serves an operator: each progress step lets pending events through once.
class PendantForm : public Form {
  public:
    PendantForm() : Form(u"StdBofForm") {
        Add<ProgressBar>(u"ProgressBar2");
        SetLive(true);
    }
};

class ConversionFixture : public ::testing::Test {
  protected:
    static constexpr TextView kFile = u"C:\\data\\names.txt";

    memory::MemoryMachine machine;
    TestDatabase db;
    memory::RecordingView view;

    ConversionFixture() {
        SetView(&view);
        machine.processes.Add(u"C:\\tqx\\OrvoDB.exe");
    }
    ~ConversionFixture() override {
        UnloadForm(u"StdForm");
        UnloadForm(u"StdBofForm");
        SetView(nullptr);
    }

    void BecomeCustomer(TextView sCustomer = u"VW") {
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", sCustomer);
    }

    // The lines, each ended by CR LF, in the system's code page.
    void PutFile(const std::vector<std::string>& lines) {
        std::string bytes;
        for (const std::string& line : lines)
            bytes += line + "\r\n";
        machine.files.Put(kFile, bytes);
    }

    // An entry in the long-text language; empty for a Null text.
    void Store(const std::string& sModule, const std::string& sKey, const std::string& sText) {
        StoreSql(sModule, sKey, "'" + sText + "'");
    }
    void StoreSql(const std::string& sModule, const std::string& sKey, const std::string& sTextSql,
                  const std::string& sLanguage = "99") {
        db.Execute("INSERT INTO Items(Module,KeyString) VALUES('" + sModule + "','" + sKey +
                   "');INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items)," + sLanguage +
                   "," + sTextSql + ");");
    }

    // All texts as "Module|Key|Text", sorted by bytes.
    Rows Stored() const {
        Rows rows;
        for (const auto& row : db.Query("SELECT Module||'|'||KeyString||'|'||String FROM Items "
                                        "JOIN Messages USING(Key_id) WHERE Language_id=99"))
            rows.push_back(row.front());
        std::sort(rows.begin(), rows.end());
        return rows;
    }

    // One entry of each class, the welding channels included.
    void StoreOneOfEachClass() {
        for (const auto& [sModule, sKey] : EachClass())
            Store(sModule, sKey, "old");
    }
    static const std::vector<std::pair<std::string, std::string>>& EachClass() {
        static const std::vector<std::pair<std::string, std::string>> keys{
            {"IO", "IN_900"},
            {"IO", "OUT_900"},
            {"Notice", "NoticeText90"},
            {"Counter", "CounterText9"},
            {"Flag", "FlagText900"},
            {"Timer", "TimerText9"},
            {"IO", "ANIN_9"},
            {"IO", "ANOUT_9"},
            {"IO", "BININ_9"},
            {"IO", "BINOUT_9"},
            {"ZTQXProcParam", "ZTQXProcParam_90"},
            {"A10TP", "Start19"},
            {"A10TP", "Weld19"},
            {"A10TP", "CraterChannel19"}};
        return keys;
    }
    static Rows OldSignals() { return Old(0, 11); }
    static Rows OldWelding() { return Old(11, 14); }
    static Rows Old(std::size_t nFrom, std::size_t nTo) {
        Rows rows;
        for (std::size_t n = nFrom; n < nTo; ++n)
            rows.push_back(EachClass()[n].first + "|" + EachClass()[n].second + "|old");
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    static Rows Joined(Rows left, const Rows& right) {
        left.insert(left.end(), right.begin(), right.end());
        std::sort(left.begin(), left.end());
        return left;
    }

    // Runs the pass and tells how many progress steps it made.
    template <typename Pass>
    int StepsOf(Pass pass) {
        if (!FindForm(u"StdBofForm")) LoadForm(std::make_unique<PendantForm>());
        const int nBefore = Steps();
        pass();
        return Steps() - nBefore;
    }
    int Steps() const { return view.Count(memory::ViewEvent::Kind::PendingEvents); }
};

}  // namespace nomira::testing

// docs/forms.md: what is visible and enabled in each state of each form, written from the form
// objects themselves.
//
// With NOMIRA_WRITE_FORMS set to a file's name the page is written there; it is compared with
// docs/forms.md in any case.
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>

#include "adapters/memory/MemoryMachine.h"
#include "adapters/memory/PlayedUser.h"
#include "adapters/memory/RecordingView.h"
#include "adapters/memory/ScriptedLinkLibrary.h"
#include "database/adoModul.h"
#include "frame/ProgramVariables.h"
#include "frame/entry/Main.h"
#include "link/cVexonComm.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "ui/FormAccess.h"
#include "ui/StdForm.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

using memory::PlayedUser;
constexpr const char* kVw = "VW";
constexpr const char* kThirdOption = "option 3";

using Row = std::map<Text, std::string>;  // by control

// One column of a table.
struct State {
    const char* sName;
    const char* sCustomer;  // nullptr on the desktop
    bool bDatabase;
    std::function<void(PlayedUser&)> reach;
    bool bRunning = false;  // looked at in the middle of the pass that `reach` begins
};

void OpenView(PlayedUser& user) {
    user.Click(u"cmdView");
}

void PressKeys(PlayedUser& user, std::initializer_list<std::int16_t> keys) {
    for (const std::int16_t nKey : keys)
        user.PressPendantKey(u"TqpKeys", nKey);
}

const std::vector<State>& DesktopStates() {
    static const std::vector<State> states{
        {"start", nullptr, true, [](PlayedUser&) {}},
        {"start without database", nullptr, false, [](PlayedUser&) {}},
        {"option 1", nullptr, true, [](PlayedUser& user) { user.Click(u"Option1"); }},
        {"option 2", nullptr, true, [](PlayedUser& user) { user.Click(u"Option2"); }},
        {"option 3", nullptr, true, [](PlayedUser& user) { user.Click(u"Option3"); }},
        {"database view", nullptr, true, OpenView},
        {"import running", nullptr, true,
         [](PlayedUser& user) {
             user.Click(u"Option1");
             user.Select(u"File1", 0);
             user.Click(u"cmdStart");
         },
         true},
    };
    return states;
}

const std::vector<State>& PendantStates() {
    static const std::vector<State> states = [] {
        std::vector<State> all;
        struct Reached {
            const char* sName;
            bool bDatabase, bRunning;
            std::initializer_list<std::int16_t> keys;
        };
        static const Reached reached[] = {
            {"start", true, false, {}},
            {"start without database", false, false, {}},
            {"option 1", true, false, {129}},
            {"option 2", true, false, {130}},
            {kThirdOption, true, false, {131}},
            {"database view", true, false, {113}},
            {"import running", true, true, {129}},
        };
        for (const char* sCustomer : {"Cell7", kVw}) {
            for (const Reached& state : reached) {
                // The customer has no third option; the key is that of the box of symbols.
                const bool bSymbols = sCustomer == kVw && state.sName == kThirdOption;
                all.push_back({bSymbols ? "third status key" : state.sName, sCustomer,
                               state.bDatabase,
                               [&state](PlayedUser& user) {
                                   PressKeys(user, state.keys);
                                   if (!state.bRunning) return;
                                   user.Select(u"File1", 0);
                                   PressKeys(user, {118});
                               },
                               state.bRunning});
            }
        }
        return all;
    }();
    return states;
}

// The control as a user meets it, its containers counted in.
std::string Seen(const Control& control) {
    bool bEnabled = true;
    for (const Control* part = &control; part; part = part->Container()) {
        if (!part->Visible()) return "";
        bEnabled = bEnabled && part->Enabled();
    }
    return bEnabled ? "yes" : "grey";
}

std::string InBackticks(const Text& sText) {
    return sText.empty() ? "" : "`" + testing::Printable(sText) + "`";
}

// A program in a machine of its own, in one of its states.
class Scene : private StoreObserver {
  public:
    explicit Scene(const State& state) {
        SetLinkLibrary(&m_link);
        SetView(&m_view);
        if (!state.bDatabase) m_database.RemoveFile();
        for (const TextView sFolder :
             {u"C:\\tqx\\Data", u"C:\\tqx\\Roboter\\TQX\\R1", u"C:\\tqx\\Roboter\\Init"})
            m_machine.files.Put(Text(sFolder).append(u"\\names.txt"), "IN_1 Pump\r\nE1 Pump\r\n");
        SetRegistry(u"InstallationDir", u"C:\\tqx");
        if (state.sCustomer) {
            const std::string_view sCustomer = state.sCustomer;
            SetRegistry(u"Customer", Text(sCustomer.begin(), sCustomer.end()));
            m_machine.processes.Add(u"C:\\tqx\\vexon3.exe");
        }
        Main();
        m_form = FindForm(state.sCustomer ? kStdBofFormClass : kNomiraMainClass);
        if (state.bRunning) SetStoreObserver(this);
        PlayedUser user(*m_form);
        state.reach(user);
        SetStoreObserver(nullptr);
        if (!state.bRunning) Look();
    }
    ~Scene() override {
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    const Row& Controls() const { return m_controls; }
    const Row& Words() const { return m_words; }
    // In the order of the design.
    const std::vector<Text>& Names() const { return m_names; }

  private:
    void SetRegistry(TextView sValue, TextView sText) {
        m_machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version", sValue,
                                     sText);
    }
    void TextStored(TextView, TextView, TextView, StoreOutcome) override { Look(); }
    void Look() {
        m_names.clear();
        m_form->ForEachControl([&](Control& control) {
            if (control.Width() == 0) return;  // has no place
            m_names.push_back(control.FullName());
            m_controls[control.FullName()] = Seen(control);
        });
        const auto& bar = std::as_const(m_form->Get<StatusBar>(u"StatusBar1"));
        for (std::int16_t n = 2; n <= 4; ++n) {
            const Panel& panel = bar.Panels(n);
            std::string sPanel = InBackticks(panel.Text());
            if (!panel.Picture().sName.empty())
                sPanel += (sPanel.empty() ? "" : " ") + testing::Printable(panel.Picture().sName);
            m_words[u"panel " + Text(1, static_cast<char16_t>(u'0' + n))] = sPanel;
        }
        m_words[u"focus"] = m_form->Focus() ? InBackticks(m_form->Focus()->FullName()) : "";
        for (const TextView sButton : {u"cmdStart", u"cmdExit"})
            if (auto* button = As<Button>(m_form->Find(sButton)))
                m_words[Text(sButton)] = InBackticks(button->Caption());
        if (auto* frame = As<Frame>(m_form->Find(u"RahmenFrm")))
            m_words[u"RahmenFrm"] = InBackticks(frame->Caption());
    }

    memory::MemoryMachine m_machine;
    memory::RecordingView m_view;
    testing::TestDatabase m_database;
    memory::ScriptedLinkLibrary m_link{m_machine.files};
    Form* m_form = nullptr;
    Row m_controls, m_words;
    std::vector<Text> m_names;
};

void AppendTable(std::string& sPage, const std::vector<const State*>& states) {
    std::vector<std::unique_ptr<Row>> controls, words;
    std::vector<Text> names;
    for (const State* state : states) {
        const Scene scene(*state);
        controls.push_back(std::make_unique<Row>(scene.Controls()));
        words.push_back(std::make_unique<Row>(scene.Words()));
        if (names.empty()) names = scene.Names();
    }
    const auto line = [&](const std::string& sHead, const auto& cell) {
        sPage += "| " + sHead + " |";
        for (std::size_t n = 0; n < states.size(); ++n) {
            const std::string sCell = cell(n);
            sPage += sCell.empty() ? " |" : " " + sCell + " |";
        }
        sPage += "\n";
    };
    line("control", [&](std::size_t n) { return std::string(states[n]->sName); });
    line("---", [](std::size_t) { return std::string("---"); });
    for (const Text& sName : names)
        line("`" + testing::Printable(sName) + "`",
             [&](std::size_t n) { return (*controls[n])[sName]; });
    for (const auto& [sWord, sFirst] : *words.front())
        line(testing::Printable(sWord), [&](std::size_t n) { return (*words[n])[sWord]; });
}

std::vector<const State*> StatesOf(const std::vector<State>& states, const char* sCustomer) {
    std::vector<const State*> chosen;
    for (const State& state : states)
        if (!sCustomer || state.sCustomer == std::string_view(sCustomer)) chosen.push_back(&state);
    return chosen;
}

std::string Page() {
    std::string sPage =
        "# The forms, state by state\n\n"
        "Made from the form objects by a test; to write it anew:\n\n"
        "```sh\nNOMIRA_WRITE_FORMS=docs/forms.md build/dev/tests/ui/forms_page_test\n```\n\n"
        "`yes`: visible and enabled; `grey`: visible and disabled; empty: hidden. Controls may "
        "lie\n"
        "on one another: what is visible covers what its place holds. The last lines tell the "
        "words\n"
        "on buttons, frame and status panels, and which control has the focus. The batch run's "
        "form\n"
        "has one state: all that it has is visible.\n\n"
        "## The desktop form, `NomiraMain`\n\n";
    AppendTable(sPage, StatesOf(DesktopStates(), nullptr));
    sPage += "\n## The pendant form, `StdBofForm`\n\n";
    AppendTable(sPage, StatesOf(PendantStates(), "Cell7"));
    sPage += "\n## The pendant form of the customer VW\n\n";
    AppendTable(sPage, StatesOf(PendantStates(), kVw));
    return sPage;
}

TEST(FormStatesTest, ThePageTellsWhatTheFormsShow) {
    const std::string sPage = Page();
    if (const char* sFile = std::getenv("NOMIRA_WRITE_FORMS"))
        std::ofstream(sFile, std::ios::binary) << sPage;
    std::ifstream in(NOMIRA_DOCS_DIR "/forms.md", std::ios::binary);
    const std::string sWritten{std::istreambuf_iterator<char>(in), {}};
    EXPECT_EQ(sPage, sWritten) << "docs/forms.md is out of date; its head tells how to write it";
}

}  // namespace
}  // namespace nomira

// What the tests of the user programs stand on: a machine in memory, a database with the long
// texts of a few signals, and forms with just the controls that a test needs.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "database/adoModul.h"
#include "testing/TestDatabase.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira::testing {

class TestForm : public Form {
  public:
    using Form::Form;
    template <typename Kind>
    Kind& With(Text sName) {
        return Add<Kind>(std::move(sName));
    }
};

// The form of this class, loaded until the test ends.
class LoadedForm {
  public:
    explicit LoadedForm(Text sClass) {
        auto form = std::make_unique<TestForm>(std::move(sClass));
        m_form = form.get();
        LoadForm(std::move(form));
    }
    ~LoadedForm() { UnloadForm(m_form->Class()); }
    LoadedForm(const LoadedForm&) = delete;
    LoadedForm& operator=(const LoadedForm&) = delete;
    TestForm* operator->() const { return m_form; }
    TestForm& operator*() const { return *m_form; }

  private:
    TestForm* m_form;
};

inline constexpr const char* kLongTexts = R"(
    BEGIN;
    INSERT INTO Items (Key_id, Module, KeyString) VALUES
        (1, 'IO', 'OUT_1'), (2, 'IO', 'OUT_2'), (3, 'IO', 'OUT_12'), (4, 'IO', 'IN_1'),
        (5, 'IO', 'IN_5'), (6, 'IO', 'ANOUT_3'), (7, 'Notice', 'NoticeText3'),
        (8, 'Timer', 'TimerText2'), (9, 'Flag', 'FlagText3');
    INSERT INTO Messages (Key_id, Language_id, String) VALUES
        (1, 99, 'Clamp'), (2, 99, 'Valve'), (3, 99, 'Cooling'), (4, 99, 'Gate'), (5, 99, 'Door'),
        (6, 99, 'Speed'), (7, 99, 'Ready'), (8, 99, 'Delay'), (9, 99, 'Done');
    COMMIT;
)";

class ProgramFixture : public ::testing::Test {
  protected:
    ProgramFixture() { m_database.Execute(kLongTexts); }

    void Store(TextView sModule, TextView sKey, TextView sText) {
        OpenDatabase(kLongTextDatabase);
        ASSERT_TRUE(StoreLongText(sText, sModule, sKey));
        CloseDatabase();
    }

    const std::vector<memory::MessageBoxShown>& Boxes() const { return m_machine.desktop.boxes; }

    memory::MemoryMachine m_machine;
    TestDatabase m_database;
};

}  // namespace nomira::testing

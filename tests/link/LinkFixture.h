// What the tests of the link stand on: a machine in memory, a controller that answers as told, and
// a form that writes down how it is called by name.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "adapters/memory/ScriptedLinkLibrary.h"
#include "langtools/BasicText.h"
#include "link/cVexonComm.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

class CalledForm : public Form {
  public:
    CalledForm() : Form(u"Called") {}
    // As u"SetInfoResult($A=1)"; a 16-bit number stands with a "%" behind it.
    std::vector<Text> calls;
    // Every call fails behind its entry.
    bool bFails = false;

    void CallByName(TextView sMethod, std::span<const CallArgument> arguments) override {
        Text sCall = Text(sMethod) + u"(";
        for (std::size_t n = 0; n < arguments.size(); ++n)
            sCall += (n > 0 ? u", " : u"") + std::visit(Words{}, arguments[n]);
        calls.push_back(sCall + u")");
        if (bFails) Raise(ErrorNumber::NoSuchMember);
    }

  private:
    struct Words {
        Text operator()(std::int16_t n) const { return DecimalText(n) + u"%"; }
        Text operator()(std::int32_t n) const { return DecimalText(n); }
        Text operator()(const Text& s) const { return s; }
    };
};

class LinkFixture : public ::testing::Test {
  protected:
    LinkFixture() { SetLinkLibrary(&m_library); }
    ~LinkFixture() override {
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
    }

    // The inner object, linked; the calls of the way there are forgotten.
    cVexonComm& Linked(std::int16_t nMode = 0) {
        g_Comm().ConnectingVexon(u"Form", &m_form);
        cVexonComm& inner = *g_Comm().VexonCommands;
        if (nMode != 0) inner.ConnectToVexon(u"Form", nMode);
        m_library.calls.clear();
        return inner;
    }
    // The inner object of a controller whose middleware doesn't run.
    cVexonComm& Unlinked() {
        g_Comm().ExitVexonComm();
        m_library.bMiddlewareRuns = false;
        cVexonComm& inner = Linked();
        m_library.bMiddlewareRuns = true;
        return inner;
    }
    const std::vector<Text>& Calls() const { return m_library.calls; }
    bool WasCalled(TextView sCall) const {
        return std::ranges::count(m_library.calls, Text(sCall)) != 0;
    }
    // The operation fails with a detail that makes a text.
    void Fail(TextView sCall) { m_library.Fail(sCall); }

    memory::MemoryMachine m_machine;
    memory::ScriptedLinkLibrary m_library{m_machine.files};
    CalledForm m_form;
};

using Texts = std::vector<Text>;

}  // namespace nomira::testing

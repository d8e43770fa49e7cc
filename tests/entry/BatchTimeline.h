// What a batch run does that can be seen from outside, in its order: the form, its words as they
// are refreshed, message boxes, files.
#pragma once

#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "platform/Platform.h"
#include "testing/ForwardingPorts.h"
#include "testing/NotingFiles.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira::testing {

// Entries are as u"show StdForm", u"caption TITLE" (the form's own), u"label WORDS" (at the
// refresh), u"unload StdForm", u"box TEXT", and those of NotingFiles. A label that is set
// without a refresh leaves no entry.
class BatchTimeline : public View, public memory::MemoryDesktop {
  public:
    explicit BatchTimeline(memory::MemoryMachine& machine) : m_files(machine.files, happened) {
        Platform platform = PortsOf(machine);
        platform.files = &m_files;
        platform.desktop = this;
        SetPlatform(platform);
        SetView(this);
    }

    std::vector<Text> happened;

    void FormShown(Form& form) override { happened.push_back(u"show " + form.Class()); }
    void FormUnloaded(Form& form) override { happened.push_back(u"unload " + form.Class()); }
    void PropertyChanged(Form& form, Control* control, TextView sProperty) override {
        // The caption that a form is built with is set before it is shown.
        if (!control && sProperty == u"Caption" && form.Visible())
            happened.push_back(u"caption " + form.Caption());
    }
    void Refreshed(Control& control) override {
        if (auto* label = dynamic_cast<Label*>(&control))
            happened.push_back(u"label " + label->Caption());
    }
    void ProcessPendingEvents() override { happened.emplace_back(u"events"); }
    void RunEventLoop() override { happened.emplace_back(u"event loop"); }
    void ShowMessageBox(TextView sText, TextView sTitle, BoxIcon icon) override {
        happened.push_back(Text(u"box ").append(sText));
        MemoryDesktop::ShowMessageBox(sText, sTitle, icon);
    }

  private:
    NotingFiles m_files;
};

}  // namespace nomira::testing

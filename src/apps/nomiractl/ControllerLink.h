// The link to the controller for the length of one command, with clear words for what fails.
//
// A failure leaves a new link behind it, so that its detail is its own, and so that work goes on
// after a connection that broke. All of these throw Refusal; its words don't name the program or
// the variable.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"

namespace nomira::companion {

class ControllerLink {
  public:
    // Connects over the link library that is in use. `socket`, where that looks for the
    // controller's middleware, is for the words alone.
    explicit ControllerLink(std::filesystem::path socket);
    ~ControllerLink();
    ControllerLink(const ControllerLink&) = delete;
    ControllerLink& operator=(const ControllerLink&) = delete;

    // The names in a directory of the controller, such as u"R1\Program": its files, its
    // directories.
    std::vector<Text> Files(TextView sDirectory);
    std::vector<Text> Directories(TextView sDirectory);

    // Copies the program of this name, wherever the controller has it, into the folder; writes over
    // a file that is there.
    void Fetch(TextView sName, const std::filesystem::path& folder);
    // Copies the file to where the controller has one of its name, else to its root, or to the
    // controller's path `sTarget`.
    void Send(const std::filesystem::path& file, TextView sTarget = {});

    // Variables, their names in any case.
    Text Read(TextView sVariable);
    void Write(TextView sVariable, TextView sValue);

  private:
    bool Connect();
    std::vector<Text> List(TextView sMask);
    template <typename Operation>
    void Run(std::string_view sWhat, Operation operation);

    std::filesystem::path m_socket;
    Form m_owner{u"nomiractl"};
};

// A directory of the controller as the user writes it, "Program", "R1/Program" or
// "TQX:\R1\Program", in the form u"R1\Program"; the root, u"R1", for none. Throws Refusal.
Text ControllerDirectory(std::string_view sDirectory);

}  // namespace nomira::companion

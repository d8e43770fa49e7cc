// The desktop form: the front end on any PC that is no controller.
//
// An option button chooses the conversion and shows the lists that belong to it, Start runs it
// (RunConversion), View DB puts the database as text over the lists. The caption of cmdExit is the
// form's one piece of mode: u"Exit View" means that the view is open.
#pragma once

#include "langtools/Text.h"
#include "ui/FormAccess.h"
#include "ui/FormDesign.h"

namespace nomira {

class NomiraMain : public DesignedForm {
  public:
    NomiraMain();

    // The form moves to the middle of the screen and into the state without a chosen option; the
    // progress bar begins at 1 of 1 to 27, hidden over the status bar, which gets its other three
    // panels. The long-text database is opened, and stays open; without it neither Start nor View
    // DB can be used. The lists go to the installation of the controller software, if there is one.
    // From now on the controls have their handlers.
    void Load() override;

  private:
    void AttachHandlers();
    void CheckDatabase();
    void GoToInstallation();

    void Option3_Click();
    void cmdView_Click();
    void cmdExit_Click();
    void Drive1_Change();

    void LeaveView();
    void ShowChosenOption();

    // The drive from which the lists were moved to the installation, to which they return from one
    // that can't be used; empty without an installation.
    Text m_sLastDrive;
};

}  // namespace nomira

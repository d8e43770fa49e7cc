// What Start does on the desktop form.
#pragma once

#include <cstdint>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"

namespace nomira {

// What cmdStart reads while the database view is open, and by which RunConversion knows it.
inline constexpr TextView kSaveCaption = u"Save DB";

// The panels of the desktop form's status bar: what is running, failures and results.
inline constexpr std::int16_t kWorkPanel = 2;
inline constexpr std::int16_t kResultPanel = 3;

// Runs the conversion of the chosen option on what the form's lists have selected, or, while the
// database view is open, writes the view's text back. cmdExit and cmdView are disabled meanwhile,
// ProgressBar1 and the panels of StatusBar1 tell what goes on, and no events are let through.
// Without a selection of local files a message box asks for one.
//
// Programs count as those on the controller as soon as one of the middleware's processes runs,
// whether there is a link or not, and even then it is File2 that tells which.
//
// Nothing is trapped: a RuntimeError of a pass goes up, the buttons still disabled; ObjectNotSet is
// one of them, for programs on the controller without a link.
void RunConversion(const Form& form);

}  // namespace nomira

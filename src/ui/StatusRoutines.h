// What the status bar tells of an action that runs. The routines name ProgressBar2, which the
// pendant form alone has.
#pragma once

#include <cstdint>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"
#include "ui/formlayer/Picture.h"

namespace nomira {

// The panels of the pendant form's status bar: the link, the running action, messages.
inline constexpr std::int16_t kLinkPanel = 2;
inline constexpr std::int16_t kActionPanel = 3;
inline constexpr std::int16_t kMessagePanel = 4;

// Gives panel `nPanel` of StatusBar1, one-based, its text and its picture.
void SetPanel(const Form& form, std::int16_t nPanel, TextView sText, const Picture& picture);

// The link's panel shows the picture of a link that is up; its text stays.
void ShowLinkUp(const Form& form);

// The panel shows the text and the picture, and the progress bar is seen and begins anew.
void BeginStatus(const Form& form, TextView sText, std::int16_t nPanel, const Picture& picture);
// The panel is empty, and the progress bar hidden. A bar that hasn't begun anew yet still does so.
void EndStatus(const Form& form, std::int16_t nPanel);

}  // namespace nomira

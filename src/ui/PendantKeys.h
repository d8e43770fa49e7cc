// Which hardware keys of the pendant come to the pendant form. On a form of another kind both
// routines do nothing.
#pragma once

#include "ui/formlayer/Form.h"

namespace nomira {

// Hands the ranges of key codes to the form's TqpKeys.
void AddPendantKeys(const Form& form);
// Takes the same ranges back.
void RemovePendantKeys(const Form& form);

}  // namespace nomira

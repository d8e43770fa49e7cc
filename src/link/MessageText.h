// A message record as one line of text.
#pragma once

#include "langtools/Text.h"
#include "link/MessageRecord.h"

namespace nomira {

// A controller message: its fields separated by ",", then each parameter of the message and of its
// cause as u",INDEX=TEXT". A value that is no array has no parameters.
Text MessageText(const MessageRecord& message);

// A failure: its fields with their names, then each parameter. Raises SubscriptOutOfRange for an
// array without elements and TypeMismatch for a value that is no array: such a record gives no
// text at all.
Text FailureText(const MessageRecord& failure);

}  // namespace nomira

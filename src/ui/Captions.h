// The pendant form's words in the controller's language, from the language catalogue. A catalogue
// that can't be read is never reported: each word has an English one in its place.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "langtools/Text.h"

namespace nomira {

// Texts by their keys, both as they are stored.
using Catalogue = std::unordered_map<Text, Text>;

// The module's texts in this language; a row with a Null is passed over. None if there are no
// texts, or if anything fails: the catalogue is missing, it lacks a table, or two rows have one
// key. Takes the shared connection for itself: one that is open is closed first, and a failure
// leaves open what it has come to. So it must not run while another database operation does.
std::optional<Catalogue> ReadCatalogueModule(TextView sModule, std::int32_t nLanguageId);

// Gives the loaded pendant form its words, and the message variables of frame/ProgramVariables.h
// theirs. The texts are read anew by the language's code page, which cuts them at 256 characters. A
// word whose text is missing is English, and so is all of a word that is made of two texts, one of
// which is missing. Raises ObjectNotSet if the form isn't loaded.
void LoadCaptions();

}  // namespace nomira

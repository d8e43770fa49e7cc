// The rules by which check finds what the program would silently do otherwise than meant, and what
// would stop it. Their ids never change: baselines and pipelines hold on to them. docs/rules.md
// lists them for people.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace nomira::companion {

enum class Severity { Note, Warning, Error };

// "note", "warning", "error".
const char* SeverityName(Severity severity);

// In the order of the table.
enum class Rule {
    TextLfOnly,
    TextLoneLf,
    TextUtf8Mark,
    TextUtf16Mark,
    TextUtf8,
    TextNotUtf8,
    TextOutsidePage,
    TextNoCharacter,
    TextControl,
    TextLongLine,
    TextManyWords,
    TextLeadingBlank,
    TextOtherForm,
    TextParamNotRead,
    TextTooManyDigits,
    TextKeyCase,
    TextKeyRunOn,
    TextRemark,
    TextNoText,
    TextNoChannelText,
    TextMarker,
    TextTabBehindKey,
    TextTab,
    TextUmlaut,
    TextRefusedSign,
    TextApostrophe,
    TextOpenBracket,
    TextWildcard,
    TextState,
    TextIsKey,
    TextDuplicateKey,
    TextLeadingZeros,
    TextBareNumber,
    TextNoWipe,
    ProgramUnreadable,
    ProgramReadOnly,
    ProgramNoState,
    ProgramNoComma,
    ProgramOpenBracket,
    ProgramStops,
    ProgramTooManyLines,
    ProgramLfOnly,
    ProgramLoneLf,
    ProgramLineEnds,
    ProgramNoCharacter,
    ProgramNotCompared,
    ProgramNameLost,
    ProgramNoNumber,
    ProgramMarker,
    ProgramRefusedSign,
    ProgramWildcard,
    ProgramHeaderCut,
    ProgramSymbolOnly,
    ProgramNameElsewhere,
    ProgramNothingToReplace,
    ProgramCyclicFlag,
    ProgramNotSettled,
    ProgramNameNotSeen,
    ProgramTabIndent,
    DatabaseDamaged,
    DatabaseNotWritable,
    DatabaseNoMessage,
    DatabaseNullText,
    DatabaseDuplicateKey,
    DatabaseTwoMessages,
    DatabaseNoClass,
    DatabaseBareNumber,
    DatabaseWipedByChance,
    DatabaseEmptyMarker,
    DatabaseEmptyText,
    DatabaseNotReadBack,
    DatabaseReadBackChanged,
    DatabaseLineEnd,
    DatabaseNoCharacter,
    DatabaseRefusedSign,
    DatabaseApostrophe,
    DatabaseOpenBracket,
    DatabaseWildcard,
    DatabaseState,
    DatabaseIsKey,
    RegistryLine,
    RegistryCustomer,
    RegistryType,
    RegistryUnterminated,
    RegistryLongValue,
    RegistryLanguage,
    RegistryBlank,
    RegistryBlanksKept,
};

struct RuleRow {
    Rule rule;
    const char* sId;
    Severity severity;
    const char* sSentence;  // {0}, {1} ... are what a finding fills in
    const char* sWhy;
};

std::span<const RuleRow> AllRules();
const RuleRow& RowOf(Rule rule);

// The rule's sentence with these words filled in.
std::string Sentence(Rule rule, const std::vector<std::string>& words);

}  // namespace nomira::companion

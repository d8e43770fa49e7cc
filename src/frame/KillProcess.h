// The program's dealings with the system other than the registry: which processes run, the user's
// language and code pages, the first instance's window, delimiter-separated fields. Despite its
// name, which is that of the controller software's module, it ends no process.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// Whether a process runs whose executable's file name holds `sName`, case ignored; so a stem
// without extension does, and "vexon3.exe" also finds "xvexon3.exe". False if anything fails.
bool IsProcessRunning(TextView sName);
// The two ways to look, by system family.
bool IsProcessRunningNt(TextView sName);
bool IsProcessRunning9x(TextView sName);

// 1 for the family of Windows 95, anything else for the NT family.
std::int32_t GetPlatformId();

// The primary language number of the user's default language (7 is German): its low 8 bits; 9
// (English) if the system raises a failure.
std::int16_t GetDefaultLanguageId();

// The default 8-bit code page of a locale in decimal; "1252" for an unknown locale.
Text GetLocaleCodePage(std::int32_t nLocale);

// Text whose bytes belong to another code page than the system's: `sText` goes back to its bytes
// by the system's page and is read anew by `nCodePage`, up to the first U+0000 and at most 256
// characters.
Text RedecodeText(std::int32_t nCodePage, TextView sText);

// How many fields `sText` has when cut at the delimiter; 0 for an empty text. Meant for
// delimiters of one character: a longer one may be counted more than once where it overlaps.
std::int16_t CountFields(TextView sText, TextView sDelimiter);

// The field with the number nRow * nWidth + nColumn (nColumn alone if nWidth is 0), counted from
// 0; empty beyond the last one. A negative number gives the first field.
Text GetField(TextView sText, TextView sDelimiter, std::int32_t nRow, std::int32_t nWidth,
              std::int32_t nColumn);

// Raises the main window of a running instance, known by its title; nothing happens without one.
void BringMainWindowToTop();

}  // namespace nomira

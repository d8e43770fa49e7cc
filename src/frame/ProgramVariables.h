// Variables of the whole program that no single module below them owns.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// ---- Set by Main at start-up ----

// Installation directory of the controller software, without a trailing "\"; empty if unknown.
extern Text g_sInstallDir;
// The language as hexadecimal text; empty if the registry has none.
extern Text g_sLanguage;
extern std::int32_t g_nLanguageId;
// Which front end runs; fixed at start-up.
extern bool g_bPendantMode;
extern bool g_bBatchMode;

// ---- Told by the controller ----

// Sizes of the signal classes. g_nNumIo is 1024 from start-up; the others stay
// 0 until the controller has told them.
extern std::int16_t g_nNumIo;
extern std::int16_t g_nNumNotice;
extern std::int16_t g_nNumTimer;
extern std::int16_t g_nNumCounter;
extern std::int16_t g_nNumFlag;
extern std::int16_t g_nNumAnOut;
extern std::int16_t g_nNumAnIn;
extern std::int16_t g_nNumBinOut;
extern std::int16_t g_nNumBinIn;
extern std::int16_t g_nNumProcParam;

// ---- Read from the language catalogue for the pendant form; empty in a run without it ----

extern Text g_sDatabaseViewCaption;
// What the status bar says where a name, or a file, has to be given first.
extern Text g_sMsgEnterName;
extern Text g_sMsgSelectFile;
extern Text g_sMsgDeviceUnavailable;

}  // namespace nomira

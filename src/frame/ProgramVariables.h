// The variables that Main sets at start-up and everybody else reads.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// Installation directory of the controller software, without a trailing "\"; empty if unknown.
extern Text g_sInstallDir;
// The language as hexadecimal text; empty if the registry has none.
extern Text g_sLanguage;
extern std::int32_t g_nLanguageId;
// Which front end runs; fixed at start-up.
extern bool g_bPendantMode;
extern bool g_bBatchMode;

// Sizes of the signal classes on the controller. g_nNumIo is 1024 from start-up; the others stay
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

}  // namespace nomira

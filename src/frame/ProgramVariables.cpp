#include "frame/ProgramVariables.h"

#include "langtools/ProgramState.h"

namespace nomira {

Text g_sInstallDir;
Text g_sLanguage;
std::int32_t g_nLanguageId = 0;
bool g_bPendantMode = false;
bool g_bBatchMode = false;

std::int16_t g_nNumIo = 1024;
std::int16_t g_nNumNotice = 0;
std::int16_t g_nNumTimer = 0;
std::int16_t g_nNumCounter = 0;
std::int16_t g_nNumFlag = 0;
std::int16_t g_nNumAnOut = 0;
std::int16_t g_nNumAnIn = 0;
std::int16_t g_nNumBinOut = 0;
std::int16_t g_nNumBinIn = 0;
std::int16_t g_nNumProcParam = 0;

Text g_sDatabaseViewCaption;
Text g_sMsgEnterName;
Text g_sMsgSelectFile;
Text g_sMsgDeviceUnavailable;

namespace {

const OnProgramReset g_reset{[] {
    g_sInstallDir.clear();
    g_sLanguage.clear();
    g_nLanguageId = 0;
    g_bPendantMode = false;
    g_bBatchMode = false;
    g_nNumIo = 1024;
    for (std::int16_t* pSize :
         {&g_nNumNotice, &g_nNumTimer, &g_nNumCounter, &g_nNumFlag, &g_nNumAnOut, &g_nNumAnIn,
          &g_nNumBinOut, &g_nNumBinIn, &g_nNumProcParam})
        *pSize = 0;
    for (Text* pText :
         {&g_sDatabaseViewCaption, &g_sMsgEnterName, &g_sMsgSelectFile, &g_sMsgDeviceUnavailable})
        pText->clear();
}};

}  // namespace
}  // namespace nomira

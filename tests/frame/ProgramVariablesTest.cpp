#include "frame/ProgramVariables.h"

#include "langtools/ProgramState.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

TEST(ProgramVariablesTest, OnlyTheInputsAndOutputsHaveASizeFromTheStart) {
    for (std::int16_t* pSize :
         {&g_nNumIo, &g_nNumNotice, &g_nNumTimer, &g_nNumCounter, &g_nNumFlag, &g_nNumAnOut,
          &g_nNumAnIn, &g_nNumBinOut, &g_nNumBinIn, &g_nNumProcParam})
        *pSize = 7;
    ResetProgramState();
    EXPECT_EQ(g_nNumIo, 1024);
    for (const std::int16_t nSize :
         {g_nNumNotice, g_nNumTimer, g_nNumCounter, g_nNumFlag, g_nNumAnOut, g_nNumAnIn,
          g_nNumBinOut, g_nNumBinIn, g_nNumProcParam})
        EXPECT_EQ(nSize, 0);
}

TEST(ProgramVariablesTest, TheTextsOfTheCatalogueAreEmptyFromTheStart) {
    for (Text* pText :
         {&g_sDatabaseViewCaption, &g_sMsgEnterName, &g_sMsgSelectFile, &g_sMsgDeviceUnavailable})
        *pText = u"text";
    ResetProgramState();
    for (const Text& sText :
         {g_sDatabaseViewCaption, g_sMsgEnterName, g_sMsgSelectFile, g_sMsgDeviceUnavailable})
        EXPECT_EQ(sText, u"");
}

}  // namespace
}  // namespace nomira

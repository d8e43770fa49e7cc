#include "link/SystemSizes.h"

#include "frame/ProgramVariables.h"
#include "langtools/CParser.h"
#include "langtools/CTools.h"
#include "link/cVexonComm.h"

namespace nomira {
namespace {

struct Size {
    TextView sVariable;
    std::int16_t& nSize;
    std::int16_t nUsual;
};

// Notices take their size from the array of cyclical flags.
const Size kSizes[] = {
    {u"$NUM_OUT", g_nNumIo, 1024},
    {u"GETVARSIZE(#CYCFLAG)", g_nNumNotice, 32},
    {u"GETVARSIZE(#TIMER)", g_nNumTimer, 32},
    {u"GETVARSIZE(#COUNT_I)", g_nNumCounter, 32},
    {u"GETVARSIZE(#FLAG)", g_nNumFlag, 1024},
    {u"GETVARSIZE(#AN_OUT)", g_nNumAnOut, 32},
    {u"GETVARSIZE(#AN_IN)", g_nNumAnIn, 32},
    {u"GETVARSIZE(#BIN_OUT)", g_nNumBinOut, 20},
    {u"GETVARSIZE(#BIN_IN)", g_nNumBinIn, 20},
};

void ReadSize(const Size& size) {
    Text sValue;
    if (g_Comm().VCShowVar(size.sVariable, sValue))
        g_Tools().Str2Int(sValue, size.nSize);
    else
        size.nSize = size.nUsual;
}

// The parameters' names are one text, separated by blanks; their count is believed from 257 to 998.
void ReadProcParam() {
    constexpr std::int16_t kUsual = 256;
    constexpr std::int16_t kTooMany = 999;
    Text sValue;
    if (!g_Comm().VCShowVar(u"PROCPAR[]", sValue)) return;
    g_Parser().Parse(sValue, u" ", u" ");
    const std::int16_t nCount = g_Parser().count();
    g_nNumProcParam = nCount > kUsual && nCount < kTooMany ? nCount : kUsual;
}

}  // namespace

void ReadSystemSizes() {
    for (const Size& size : kSizes)
        ReadSize(size);
    ReadProcParam();
}

}  // namespace nomira

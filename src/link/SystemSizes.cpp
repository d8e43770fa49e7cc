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

SystemSize ReadSize(const Size& size) {
    Text sValue;
    const bool bTold = g_Comm().VCShowVar(size.sVariable, sValue);
    if (bTold)
        g_Tools().Str2Int(sValue, size.nSize);
    else
        size.nSize = size.nUsual;
    return {size.sVariable, size.nSize, bTold ? SizeSource::Told : SizeSource::Usual};
}

// The parameters' names are one text, separated by blanks; their count is believed from 257 to 998.
SystemSize ReadProcParam() {
    constexpr TextView kVariable = u"PROCPAR[]";
    constexpr std::int16_t kUsual = 256;
    constexpr std::int16_t kTooMany = 999;
    Text sValue;
    if (!g_Comm().VCShowVar(kVariable, sValue))
        return {kVariable, g_nNumProcParam, SizeSource::Untouched};
    g_Parser().Parse(sValue, u" ", u" ");
    const std::int16_t nCount = g_Parser().count();
    const bool bBelieved = nCount > kUsual && nCount < kTooMany;
    g_nNumProcParam = bBelieved ? nCount : kUsual;
    return {kVariable, g_nNumProcParam, bBelieved ? SizeSource::Told : SizeSource::Usual};
}

}  // namespace

std::vector<SystemSize> ReadSystemSizes() {
    std::vector<SystemSize> sizes;
    for (const Size& size : kSizes)
        sizes.push_back(ReadSize(size));
    sizes.push_back(ReadProcParam());
    return sizes;
}

}  // namespace nomira

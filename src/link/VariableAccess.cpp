// The operations of cVexonComm on the controller's variables.
#include "langtools/BasicText.h"
#include "link/cVexonComm.h"

namespace nomira {
namespace {

constexpr std::int32_t kWatchCycle = 200;  // milliseconds

}  // namespace

bool cVexonComm::SetVar(TextView strVarName, TextView strNewValue) {
    return Guarded(m_oSyncVar,
                   [&](SyncVar& variables) { variables.WriteVar(strVarName, strNewValue); });
}

bool cVexonComm::ShowVar(TextView strVarName, Text& strVarValue) {
    return Guarded(m_oSyncVar, [&](SyncVar& variables) {
        const Text sValue = variables.ReadVar(strVarName);
        strVarValue = Text(strVarName).append(u"=").append(sValue);
    });
}

// The name goes into the table ahead of the library's call, and stays there if that fails.
bool cVexonComm::SetInfoOn(TextView sVariableName, TextView, std::int32_t) {
    if (m_watches.Contains(sVariableName)) return true;
    const std::int32_t nNumber = m_watches.Add(sVariableName);
    Require(m_oAsyncVar).InfoOn(*this, nNumber, sVariableName, kWatchCycle);
    return true;
}

bool cVexonComm::SetInfoOff(TextView sVariableName, std::int32_t) {
    const auto nNumber = m_watches.Remove(sVariableName);
    if (!nNumber) return false;
    return Guarded(m_oAsyncVar, [&](AsyncVar& watches) { watches.InfoOff(*nNumber); });
}

void cVexonComm::OnSetInfo(std::int32_t nID, TextView bstrVal) {
    const Text sText = m_watches.NameOf(nID).append(u"=").append(bstrVal);
    const auto form = m_oParent;
    CallForm(form, u"SetInfoResult", {sText});
    CallForm(form, u"Vexon1_CmdMessage", {sText, std::int16_t{0}});
}

bool cVexonComm::VCShowVar(TextView strVarName, Text& strVarValue) {
    const bool bShown = Require(VexonCommands).ShowVar(UCase(strVarName), strVarValue);
    const std::int32_t nEquals = InStr(strVarValue, u"=");
    if (nEquals > 0) strVarValue = Text(Trim(Mid(strVarValue, nEquals + 1)));
    return bShown;
}

}  // namespace nomira

#include "link/cVexonComm.h"

#include <utility>

#include "langtools/ProgramState.h"
#include "link/MessageText.h"

namespace nomira {
namespace {

constexpr std::int16_t kModeWithMessages = -1;
constexpr std::int32_t kMessageFilter = 311;

std::unique_ptr<cVexonComm> g_comm;
const OnProgramReset g_reset{[] { g_comm.reset(); }};

}  // namespace

cVexonComm& g_Comm() {
    if (!g_comm) g_comm = std::make_unique<cVexonComm>();
    return *g_comm;
}

cVexonComm::~cVexonComm() {
    ServerOff();
}

// ---- The inner object's link ----

bool cVexonComm::Init(Form* oParent) {
    if (!oParent) return false;
    m_oParent = oParent->Reference();
    try {
        m_oFactory = CreateLinkFactory();
        m_bLinked = true;
    } catch (const RuntimeError&) {
        m_bLinked = false;
    }
    return m_bLinked;
}

bool cVexonComm::ConnectToVexon(TextView sConnectName, std::int16_t nC_Mode) {
    m_sConnectName = sConnectName;
    m_nC_Mode = nC_Mode;
    try {
        MakeObjects();
        if (m_nC_Mode == kModeWithMessages) SubscribeToMessages();
        m_bLinked = true;
    } catch (const RuntimeError&) {
        m_bLinked = false;
    }
    m_bConnected = m_bLinked;
    return m_bLinked;
}

template <typename Object>
void cVexonComm::MakeAnew(std::unique_ptr<Object>& member, TextView sProgId) {
    member.reset();
    auto made = Require(m_oFactory).CreateLinkObject(sProgId, m_sConnectName);
    auto* object = dynamic_cast<Object*>(made.get());
    if (!object) Raise(ErrorNumber::TypeMismatch);
    member.reset(object);
    static_cast<void>(made.release());
}

void cVexonComm::MakeObjects() {
    MakeAnew(m_oSyncVar, kSyncVarId);
    MakeAnew(m_oSyncFile, kSyncFileId);
    MakeAnew(m_oSyncEdit, kSyncEditId);
    MakeAnew(m_oSyncSelect, kSyncSelectId);
    MakeAnew(m_oSyncIo, kSyncIoId);
    MakeAnew(m_oAsyncVar, kAsyncVarId);
}

// The consumer is a new object that never went through Init, as it has always been: it has no form,
// and the messages end with it.
void cVexonComm::SubscribeToMessages() {
    MakeAnew(m_oAdviseMessage, kAdviseMessageId);
    m_oAdviseMessage->Advise(std::make_shared<cVexonComm>(), kMessageFilter);
}

bool cVexonComm::ServerOff() {
    m_oSyncVar.reset();
    m_oSyncFile.reset();
    m_oSyncEdit.reset();
    m_oSyncSelect.reset();
    m_oSyncIo.reset();
    m_oAsyncVar.reset();
    m_oAdviseMessage.reset();
    m_oFactory.reset();
    return false;
}

bool cVexonComm::TqxOk(std::int32_t) {
    return true;
}

bool cVexonComm::VexonIsConnected() const {
    return m_bLinked;
}

// ---- The outer object's link ----

bool cVexonComm::ConnectingVexon(TextView strName, Form* objForm) {
    if (VexonCommands) return true;
    try {
        RequireLinkLibrary();  // the inner object is the library's callback as well
        VexonCommands = std::make_unique<cVexonComm>();
        VexonCommands->Init(objForm);
        VexonCommands->ConnectToVexon(strName);
    } catch (const RuntimeError&) {
        return false;
    }
    return true;
}

bool cVexonComm::IsVexonConnected() const {
    return VexonCommands != nullptr;
}

void cVexonComm::ExitVexonComm() {
    if (!VexonCommands) return;
    VexonCommands->ServerOff();
    VexonCommands.reset();
}

// ---- Messages and failures ----

bool cVexonComm::ConfirmAll(std::int32_t) {
    auto* confirm = dynamic_cast<ConfirmMessage*>(&Require(m_oAdviseMessage));
    if (!confirm) Raise(ErrorNumber::TypeMismatch);
    confirm->ConfirmAllMessages(*this, 0, 0);
    return true;
}

Text cVexonComm::VexonError() const {
    return m_sLastError;
}

void cVexonComm::BuildErrorText(LinkObject* failed) {
    if (!failed) return;
    try {
        m_sLastError = FailureText(failed->GetLastErrorRecord());
    } catch (const RuntimeError&) {  // what was there says more than a piece of a text
    }
}

void cVexonComm::OnAddMessage(const MessageRecord& message) {
    const Text sText = MessageText(message);
    const auto form = m_oParent;
    CallForm(form, u"RobMessage", {message.eMessageType, sText});
    CallForm(form, u"Vexon1_Message", {message.eMessageType, sText});
}

void cVexonComm::CallForm(const std::weak_ptr<Form>& form, TextView sMethod,
                          std::initializer_list<CallArgument> arguments) {
    const auto called = form.lock();
    if (!called) return;
    try {
        called->CallByName(sMethod, arguments);
    } catch (const RuntimeError&) {  // forms need not have the method
    }
}

}  // namespace nomira

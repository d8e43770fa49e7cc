#include "ui/formlayer/Form.h"

#include "langtools/BasicText.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {

Form::Form(Text sClass) : m_sClass(std::move(sClass)) {}

void Form::SetCaption(TextView sCaption) {
    Assign(m_sCaption, sCaption, u"Caption");
}

void Form::Move(std::int32_t nLeft, std::int32_t nTop, std::int32_t nWidth, std::int32_t nHeight) {
    Assign(m_nLeft, nLeft, u"Left");
    Assign(m_nTop, nTop, u"Top");
    Assign(m_nWidth, nWidth, u"Width");
    Assign(m_nHeight, nHeight, u"Height");
}

void Form::Show() {
    if (m_bVisible) return;
    m_bVisible = true;
    if (View* view = TheView()) view->FormShown(*this);
}

void Form::CallByName(TextView, std::span<const CallArgument>) {
    Raise(ErrorNumber::NoSuchMember);
}

Control* Form::Find(TextView sName) const {
    for (const auto& control : m_controls)
        if (Equal(control->Name(), sName)) return control.get();
    return nullptr;
}

void Form::Changed(TextView sProperty) {
    if (View* view = TheView()) view->PropertyChanged(*this, nullptr, sProperty);
}

}  // namespace nomira

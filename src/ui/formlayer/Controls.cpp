#include "ui/formlayer/Controls.h"

#include <algorithm>
#include <utility>

#include "langtools/RuntimeError.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {

Control::Control(Form& form, Text sName) : m_form(form), m_sName(std::move(sName)) {}

void Control::Move(std::int32_t nLeft, std::int32_t nTop, std::int32_t nWidth,
                   std::int32_t nHeight) {
    Assign(m_nLeft, nLeft, u"Left");
    Assign(m_nTop, nTop, u"Top");
    Assign(m_nWidth, nWidth, u"Width");
    Assign(m_nHeight, nHeight, u"Height");
}

void Control::SetVisible(bool bVisible) {
    Assign(m_bVisible, bVisible, u"Visible");
}

void Control::SetEnabled(bool bEnabled) {
    Assign(m_bEnabled, bEnabled, u"Enabled");
}

void Control::Refresh() {
    if (View* view = TheView()) view->Refreshed(*this);
}

void Control::Changed(TextView sProperty) {
    if (View* view = TheView()) view->PropertyChanged(m_form, this, sProperty);
}

void Label::SetCaption(TextView sCaption) {
    Assign(m_sCaption, sCaption, u"Caption");
}

void Frame::SetCaption(TextView sCaption) {
    Assign(m_sCaption, sCaption, u"Caption");
}

void TextBox::SetText(TextView sText) {
    Assign(m_sText, sText, u"Text");
}

void CheckBox::SetCaption(TextView sCaption) {
    Assign(m_sCaption, sCaption, u"Caption");
}

void CheckBox::SetValue(std::int16_t nValue) {
    if (nValue < kCleared || nValue > kGrey) Raise(ErrorNumber::InvalidPropertyValue);
    Assign(m_nValue, nValue, u"Value");
}

void ProgressBar::SetMin(float nMin) {
    if (!(nMin < m_nMax)) Raise(ErrorNumber::InvalidPropertyValue);
    Assign(m_nMin, nMin, u"Min");
    SetValue(std::max(m_nValue, m_nMin));
}

void ProgressBar::SetMax(float nMax) {
    if (!(m_nMin < nMax)) Raise(ErrorNumber::InvalidPropertyValue);
    Assign(m_nMax, nMax, u"Max");
    SetValue(std::min(m_nValue, m_nMax));
}

void ProgressBar::SetValue(float nValue) {
    const bool bInside = nValue >= m_nMin && nValue <= m_nMax;
    if (!bInside) Raise(ErrorNumber::InvalidPropertyValue);
    Assign(m_nValue, nValue, u"Value");
}

}  // namespace nomira

#include "ui/formlayer/Controls.h"

#include <algorithm>
#include <utility>

#include "langtools/BasicText.h"
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

Text Control::FullName() const {
    return m_nIndex ? m_sName + u"(" + DecimalText(*m_nIndex) + u")" : m_sName;
}

void Control::SetVisible(bool bVisible) {
    Assign(m_bVisible, bVisible, u"Visible");
    m_form.MoveFocusIfLost();
}

void Control::SetEnabled(bool bEnabled) {
    Assign(m_bEnabled, bEnabled, u"Enabled");
    m_form.MoveFocusIfLost();
}

void Control::SetTabStop(bool bTabStop) {
    Assign(m_bTabStop, bTabStop, u"TabStop");
}

void Control::SetFont(const nomira::Font& font) {
    Assign(m_font, font, u"Font");
}

void Control::SetFontBold(bool bBold) {
    nomira::Font font = m_font;
    font.bBold = bBold;
    SetFont(font);
}

void Control::SetBackColour(const Colour& colour) {
    Assign(m_backColour, colour, u"BackColour");
}

bool Control::CanTakeFocus() const {
    if (!TakesFocus()) return false;
    for (const Control* control = this; control; control = control->m_container)
        if (!control->m_bVisible || !control->m_bEnabled) return false;
    return true;
}

bool Control::HasFocus() const {
    return m_form.Focus() == this;
}

void Control::SetFocus() {
    if (!CanTakeFocus()) Raise(ErrorNumber::InvalidProcedureCall);
    m_form.GiveFocus(this);
}

bool Control::ReachedByUser() {
    if (!CanTakeFocus()) return false;
    m_form.GiveFocus(this);
    return true;
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

void TextBox::UserType(TextView sText) {
    if (ReachedByUser()) SetText(sText);
}

void CheckBox::SetCaption(TextView sCaption) {
    Assign(m_sCaption, sCaption, u"Caption");
}

void CheckBox::SetValue(std::int16_t nValue) {
    if (nValue < kCleared || nValue > kGrey) Raise(ErrorNumber::InvalidPropertyValue);
    if (m_nValue == nValue) return;
    Assign(m_nValue, nValue, u"Value");
    Fire(onClick);
}

void CheckBox::UserClick() {
    if (ReachedByUser()) SetValue(m_nValue == kCleared ? kChecked : kCleared);
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

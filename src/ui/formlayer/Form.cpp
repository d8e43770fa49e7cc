#include "ui/formlayer/Form.h"

#include <algorithm>
#include <iterator>

#include "langtools/BasicText.h"
#include "langtools/ProgramEnd.h"
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

void Form::SetBackColour(const Colour& colour) {
    Assign(m_backColour, colour, u"BackColour");
}

void Form::Show() {
    if (m_bVisible) return;
    m_bVisible = true;
    if (View* view = TheView()) view->FormShown(*this);
}

void Form::UserClose() {
    if (HandlerAtWork::Any()) EndProgram();
    UnloadForm(m_sClass);
}

void Form::CallByName(TextView, std::span<const CallArgument>) {
    Raise(ErrorNumber::NoSuchMember);
}

Control* Form::Find(TextView sName) const {
    for (const auto& control : m_controls)
        if (!control->Index() && Equal(control->Name(), sName)) return control.get();
    return nullptr;
}

Control* Form::Find(TextView sName, std::int16_t nIndex) const {
    for (const auto& control : m_controls)
        if (control->Index() == nIndex && Equal(control->Name(), sName)) return control.get();
    return nullptr;
}

bool Form::HasArray(TextView sName) const {
    return std::ranges::any_of(m_controls, [&](const auto& control) {
        return control->Index() && Equal(control->Name(), sName);
    });
}

void Form::ForEachControl(const std::function<void(Control&)>& visit) const {
    for (const auto& control : m_controls)
        visit(*control);
}

void Form::GiveFocus(Control* control) {
    if (m_focus == control) return;
    m_focus = control;
    if (control) control->Changed(u"Focus");
}

void Form::MoveFocusIfLost() {
    if (m_focus && !m_focus->CanTakeFocus()) GiveFocus(NextTabStop());
}

void Form::FocusNext() {
    if (Control* next = NextTabStop()) GiveFocus(next);
}

void Form::FocusPrevious() {
    const std::vector<Control*> stops = TabStops();
    if (stops.empty()) return;
    // The highest tab index ahead of that of the focus, else the highest of all.
    const auto here =
        m_focus ? std::ranges::lower_bound(stops, m_focus->TabIndex(), {}, &Control::TabIndex)
                : stops.begin();
    GiveFocus(here == stops.begin() ? stops.back() : *std::prev(here));
}

// The controls at which the tab key stops now, by their tab indices.
std::vector<Control*> Form::TabStops() const {
    std::vector<Control*> stops;
    for (const auto& control : m_controls)
        if (control->TabIndex() >= 0 && control->TabStop() && control->CanTakeFocus())
            stops.push_back(control.get());
    std::ranges::stable_sort(stops, {}, &Control::TabIndex);
    return stops;
}

// The lowest tab index behind that of the focus, else the lowest of all.
Control* Form::NextTabStop() const {
    const std::vector<Control*> stops = TabStops();
    if (stops.empty()) return nullptr;
    const std::int16_t nHere = m_focus ? m_focus->TabIndex() : std::int16_t{-1};
    const auto next = std::ranges::upper_bound(stops, nHere, {}, &Control::TabIndex);
    return next == stops.end() ? stops.front() : *next;
}

void Form::Changed(TextView sProperty) {
    if (View* view = TheView()) view->PropertyChanged(*this, nullptr, sProperty);
}

}  // namespace nomira

#include "ui/formlayer/StatusBar.h"

#include <algorithm>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"

namespace nomira {

Panel::Panel(StatusBar& bar, std::int16_t nIndex, nomira::Text sKey)
    : m_bar(bar), m_nIndex(nIndex), m_sKey(std::move(sKey)) {}

// The view hears of a panel's property as u"Panels(4).Text".
template <typename Held, typename Given>
void Panel::Assign(Held& held, const Given& value, TextView sProperty) {
    m_bar.Assign(held, value, (u"Panels(" + DecimalText(m_nIndex) + u").").append(sProperty));
}

void Panel::SetText(TextView sText) {
    Assign(m_sText, sText, u"Text");
}

void Panel::SetPicture(const nomira::Picture& picture) {
    Assign(m_picture, picture, u"Picture");
}

void Panel::SetStyle(std::int16_t nStyle) {
    Assign(m_nStyle, nStyle, u"Style");
}

void Panel::SetMinWidth(std::int32_t nMinWidth) {
    Assign(m_nMinWidth, nMinWidth, u"MinWidth");
}

std::int32_t Panel::Left() const {
    std::int32_t nLeft = 0;
    for (std::int16_t n = 1; n < m_nIndex; ++n)
        nLeft += m_bar.Panels(n).MinWidth();
    return nLeft;
}

std::int16_t StatusBar::PanelCount() const {
    return ToInt16(std::ssize(m_panels));
}

Panel& StatusBar::Panels(std::int16_t nIndex) {
    if (nIndex < 1 || nIndex > PanelCount()) Raise(ErrorNumber::IndexOutOfBounds);
    return *m_panels[static_cast<std::size_t>(nIndex - 1)];
}

const Panel& StatusBar::Panels(std::int16_t nIndex) const {
    return const_cast<StatusBar*>(this)->Panels(nIndex);
}

Panel& StatusBar::AddPanel(Text sKey) {
    const bool bUsed = std::ranges::any_of(
        m_panels, [&](const auto& panel) { return !sKey.empty() && panel->Key() == sKey; });
    if (bUsed) Raise(ErrorNumber::KeyNotUnique);
    const auto nIndex = ToInt16(std::ssize(m_panels) + 1);
    m_panels.push_back(std::make_unique<Panel>(*this, nIndex, std::move(sKey)));
    return *m_panels.back();
}

}  // namespace nomira

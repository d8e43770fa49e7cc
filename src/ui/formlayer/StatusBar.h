// A bar of panels at a form's foot, each with a text and a picture.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"
#include "ui/formlayer/Picture.h"

namespace nomira {

class StatusBar;

class Panel {
  public:
    static constexpr std::int16_t kTextStyle = 0;
    static constexpr std::int16_t kClockStyle = 5;
    static constexpr std::int32_t kUsualMinWidth = 1440;

    // `nIndex` is one-based.
    Panel(StatusBar& bar, std::int16_t nIndex, nomira::Text sKey);

    const nomira::Text& Key() const { return m_sKey; }
    const nomira::Text& Text() const { return m_sText; }
    void SetText(TextView sText);
    const nomira::Picture& Picture() const { return m_picture; }
    void SetPicture(const nomira::Picture& picture);
    std::int16_t Style() const { return m_nStyle; }
    void SetStyle(std::int16_t nStyle);
    // Twips.
    std::int32_t MinWidth() const { return m_nMinWidth; }
    void SetMinWidth(std::int32_t nMinWidth);
    // Twips from the bar's left, behind the least widths of the panels ahead.
    std::int32_t Left() const;

  private:
    template <typename Held, typename Given>
    void Assign(Held& held, const Given& value, TextView sProperty);

    StatusBar& m_bar;
    std::int16_t m_nIndex;
    nomira::Text m_sKey;
    nomira::Text m_sText;
    nomira::Picture m_picture;
    std::int16_t m_nStyle = kTextStyle;
    std::int32_t m_nMinWidth = kUsualMinWidth;
};

class StatusBar : public Control {
  public:
    using Control::Control;

    std::int16_t PanelCount() const;
    // One-based. Raises IndexOutOfBounds.
    Panel& Panels(std::int16_t nIndex);
    const Panel& Panels(std::int16_t nIndex) const;
    // A new last panel. Raises KeyNotUnique for a key that another panel has; an empty one is no
    // key.
    Panel& AddPanel(Text sKey = {});

  private:
    friend class Panel;
    std::vector<std::unique_ptr<Panel>> m_panels;
};

}  // namespace nomira

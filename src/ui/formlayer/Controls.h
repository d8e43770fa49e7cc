// Controls as plain objects: the state that the form logic works on, whether a screen shows it or
// not. Every change of a property goes to the view, if there is one. Lengths are twips (1440 to
// the inch), counted from the container's top left.
//
// What a user does reaches a control by the methods whose names begin with User. They do nothing
// while the control can't be reached (it or a container of it is hidden or disabled), and else do
// to the control what the act does, and run the handlers. A handler may be empty, and may unload
// the form; it is the control's last act therefore.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "langtools/Text.h"
#include "ui/formlayer/HandlerAtWork.h"

namespace nomira {

class Form;

// Where nothing is told, the view's own font and colour serve.
struct Font {
    Text sName;       // empty where not told
    float nSize = 0;  // points; 0 where not told
    bool bBold = false;
    bool operator==(const Font&) const = default;
};

// Red, green and blue as 0xRRGGBB; none where not told.
using Colour = std::optional<std::uint32_t>;

class Control {
  public:
    Control(Form& form, Text sName);
    virtual ~Control() = default;
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    const Text& Name() const { return m_sName; }
    // The place of an element of an array, such as 3 of SoftKey(3); none for any other control.
    std::optional<std::int16_t> Index() const { return m_nIndex; }
    // As in u"SoftKey(3)"; the name of a control without an index.
    Text FullName() const;
    Form& Owner() const { return m_form; }

    std::int32_t Left() const { return m_nLeft; }
    std::int32_t Top() const { return m_nTop; }
    std::int32_t Width() const { return m_nWidth; }
    std::int32_t Height() const { return m_nHeight; }
    void Move(std::int32_t nLeft, std::int32_t nTop, std::int32_t nWidth, std::int32_t nHeight);

    bool Visible() const { return m_bVisible; }
    void SetVisible(bool bVisible);
    bool Enabled() const { return m_bEnabled; }
    void SetEnabled(bool bEnabled);

    // The control in which this one lies, nullptr for the form itself. Given at design time.
    Control* Container() const { return m_container; }
    void SetContainer(Control& container) { m_container = &container; }

    // Whether the tab key stops here, and the place in its order. Controls without a place (-1) are
    // passed over. The place is given at design time.
    bool TabStop() const { return m_bTabStop; }
    void SetTabStop(bool bTabStop);
    std::int16_t TabIndex() const { return m_nTabIndex; }
    void SetTabIndex(std::int16_t nTabIndex) { m_nTabIndex = nTabIndex; }

    const nomira::Font& Font() const { return m_font; }
    void SetFont(const nomira::Font& font);
    void SetFontBold(bool bBold);
    const Colour& BackColour() const { return m_backColour; }
    void SetBackColour(const Colour& colour);

    // Whether the control is of a kind for keys, and it and its containers are visible and enabled.
    bool CanTakeFocus() const;
    bool HasFocus() const;
    // Raises InvalidProcedureCall unless the control can take the focus. The form need not be
    // shown.
    void SetFocus();

    // Kinds without a click do nothing.
    virtual void UserClick() {}

    // Shows on the screen at once what has changed.
    virtual void Refresh();

  protected:
    virtual bool TakesFocus() const { return false; }
    // Whether the user can act on the control; if so, it takes the focus.
    bool ReachedByUser();

    // Runs a handler, which may replace or destroy itself.
    template <typename Handler, typename... Arguments>
    static void Fire(const Handler& handler, Arguments&&... arguments) {
        const Handler kept = handler;
        if (!kept) return;
        const HandlerAtWork work;
        kept(arguments...);
    }

    // Gives a property its value, and tells the view if that is a new one.
    template <typename Held, typename Given>
    void Assign(Held& held, const Given& value, TextView sProperty) {
        if (held == value) return;
        held = value;
        Changed(sProperty);
    }
    // Tells the view that the named property has a new value.
    void Changed(TextView sProperty);

  private:
    friend class Form;

    Form& m_form;
    Text m_sName;
    std::optional<std::int16_t> m_nIndex;
    Control* m_container = nullptr;
    std::int32_t m_nLeft = 0, m_nTop = 0, m_nWidth = 0, m_nHeight = 0;
    bool m_bVisible = true;
    bool m_bEnabled = true;
    bool m_bTabStop = true;
    std::int16_t m_nTabIndex = -1;
    nomira::Font m_font;
    Colour m_backColour;
};

// A line of text.
class Label : public Control {
  public:
    using Control::Control;
    const Text& Caption() const { return m_sCaption; }
    void SetCaption(TextView sCaption);

  private:
    Text m_sCaption;
};

// A border with a caption around other controls.
class Frame : public Control {
  public:
    using Control::Control;
    const Text& Caption() const { return m_sCaption; }
    void SetCaption(TextView sCaption);

  private:
    Text m_sCaption;
};

// A field for text.
class TextBox : public Control {
  public:
    using Control::Control;
    const nomira::Text& Text() const { return m_sText; }
    void SetText(TextView sText);

    // Given at design time.
    bool MultiLine() const { return m_bMultiLine; }
    void SetMultiLine(bool bMultiLine) { m_bMultiLine = bMultiLine; }
    bool BothScrollBars() const { return m_bBothScrollBars; }
    void SetBothScrollBars(bool bBothScrollBars) { m_bBothScrollBars = bBothScrollBars; }

    // The user has changed the text into this one.
    void UserType(TextView sText);

  protected:
    bool TakesFocus() const override { return true; }

  private:
    nomira::Text m_sText;
    bool m_bMultiLine = false;
    bool m_bBothScrollBars = false;
};

// A box with a caption that is checked or not.
class CheckBox : public Control {
  public:
    static constexpr std::int16_t kCleared = 0;
    static constexpr std::int16_t kChecked = 1;
    static constexpr std::int16_t kGrey = 2;

    using Control::Control;

    // Runs at each new value, set by the program or the user.
    std::function<void()> onClick;

    const Text& Caption() const { return m_sCaption; }
    void SetCaption(TextView sCaption);
    std::int16_t Value() const { return m_nValue; }
    // Raises InvalidPropertyValue for any other value than the three.
    void SetValue(std::int16_t nValue);

    // Clears a box that isn't cleared, and checks one that is.
    void UserClick() override;

  protected:
    bool TakesFocus() const override { return true; }

  private:
    Text m_sCaption;
    std::int16_t m_nValue = kCleared;
};

// A bar between Min and Max. A limit that moves past the value takes the value along.
class ProgressBar : public Control {
  public:
    using Control::Control;
    float Min() const { return m_nMin; }
    float Max() const { return m_nMax; }
    float Value() const { return m_nValue; }
    // Raise InvalidPropertyValue unless Min stays below Max.
    void SetMin(float nMin);
    void SetMax(float nMax);
    // Raises InvalidPropertyValue outside Min to Max.
    void SetValue(float nValue);

  private:
    float m_nMin = 0, m_nMax = 100, m_nValue = 0;
};

}  // namespace nomira

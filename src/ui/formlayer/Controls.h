// Controls as plain objects: the state that the form logic works on, whether a screen shows it or
// not. Every change of a property goes to the view, if there is one. Lengths are twips (1440 to
// the inch), counted from the container's top left.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

class Form;

class Control {
  public:
    Control(Form& form, Text sName);
    virtual ~Control() = default;
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    const Text& Name() const { return m_sName; }
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

    // Shows on the screen at once what has changed.
    virtual void Refresh();

  protected:
    // Gives a property its value, and tells the view if that is a new one.
    template <typename Held, typename Given>
    void Assign(Held& held, const Given& value, TextView sProperty) {
        if (held == value) return;
        held = value;
        Changed(sProperty);
    }

  private:
    // Tells the view that the named property has a new value.
    void Changed(TextView sProperty);

    Form& m_form;
    Text m_sName;
    std::int32_t m_nLeft = 0, m_nTop = 0, m_nWidth = 0, m_nHeight = 0;
    bool m_bVisible = true;
    bool m_bEnabled = true;
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

  private:
    nomira::Text m_sText;
};

// A box with a caption that is checked or not.
class CheckBox : public Control {
  public:
    static constexpr std::int16_t kCleared = 0;
    static constexpr std::int16_t kChecked = 1;
    static constexpr std::int16_t kGrey = 2;

    using Control::Control;
    const Text& Caption() const { return m_sCaption; }
    void SetCaption(TextView sCaption);
    std::int16_t Value() const { return m_nValue; }
    // Raises InvalidPropertyValue for any other value than the three.
    void SetValue(std::int16_t nValue);

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

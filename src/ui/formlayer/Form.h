// A form: a named object that holds controls, found by name, or by name and index for the elements
// of an array.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <typeinfo>
#include <utility>
#include <variant>
#include <vector>

#include "langtools/RuntimeError.h"
#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"

namespace nomira {

// The control as its kind; nullptr for one of another kind, and for none. Most often the kind is
// the very one, which is told at a look.
template <typename Kind>
Kind* As(Control* control) {
    if (control && typeid(*control) == typeid(Kind)) return static_cast<Kind*>(control);
    return dynamic_cast<Kind*>(control);
}

// An argument of a call by name.
using CallArgument = std::variant<std::int16_t, std::int32_t, Text>;

class Form {
  public:
    // `sClass` is the form's kind and its name in the collection of loaded forms.
    explicit Form(Text sClass);
    virtual ~Form() = default;
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    const Text& Class() const { return m_sClass; }

    const Text& Caption() const { return m_sCaption; }
    void SetCaption(TextView sCaption);

    // Twips on the screen; the size is that of the client area.
    std::int32_t Left() const { return m_nLeft; }
    std::int32_t Top() const { return m_nTop; }
    std::int32_t Width() const { return m_nWidth; }
    std::int32_t Height() const { return m_nHeight; }
    void Move(std::int32_t nLeft, std::int32_t nTop, std::int32_t nWidth, std::int32_t nHeight);

    // None where the view's own serves.
    const Colour& BackColour() const { return m_backColour; }
    void SetBackColour(const Colour& colour);

    // On the screen, without modality.
    bool Visible() const { return m_bVisible; }
    void Show();

    // Whether the form serves an operator: not the case for a form that was loaded only as a
    // carrier of its lists, or that has no front end behind it.
    bool IsLive() const { return m_bLive; }
    void SetLive(bool bLive) { m_bLive = bLive; }

    // The user has closed the form's window. At rest this unloads the form, which is gone then.
    // A handler at work, of whatever form, would go on with a form that is gone; inside one this
    // ends the program, by ProgramEnd, and the form stays loaded until the handlers are left.
    //
    // A view calls this inside RunEventLoop and ProcessPendingEvents alone, as soon as the window
    // is closed, and lets ProgramEnd out of there; what it hears of a window while it shows or
    // paints one has to wait.
    void UserClose();

    // Runs once, when the form enters the collection of loaded forms.
    virtual void Load() {}

    // Calls the form's own method of this name. Raises NoSuchMember if it has none, as a form of no
    // kind of its own has not.
    virtual void CallByName(TextView sMethod, std::span<const CallArgument> arguments);

    // For a holder that may outlive the form: empty when the form is gone.
    std::weak_ptr<Form> Reference() const { return m_self; }

    // nullptr if the form has no control of this name; elements of arrays are found by name and
    // index alone.
    Control* Find(TextView sName) const;
    Control* Find(TextView sName, std::int16_t nIndex) const;
    // The control as its kind. Raises NoSuchMember if it is missing or of another kind.
    template <typename Kind>
    Kind& Get(TextView sName) const {
        auto* control = As<Kind>(Find(sName));
        if (!control) Raise(ErrorNumber::NoSuchMember);
        return *control;
    }
    // The element of an array as its kind. Raises ControlElementMissing if the array has no such
    // element, and else as the other Get.
    template <typename Kind>
    Kind& Get(TextView sName, std::int16_t nIndex) const {
        Control* element = Find(sName, nIndex);
        if (!element && HasArray(sName)) Raise(ErrorNumber::ControlElementMissing);
        auto* control = As<Kind>(element);
        if (!control) Raise(ErrorNumber::NoSuchMember);
        return *control;
    }
    // In the order of their addition.
    void ForEachControl(const std::function<void(Control&)>& visit) const;

    // The control that gets the keys, nullptr if none does. One that can't take them any longer
    // hands them to the next tab stop.
    Control* Focus() const { return m_focus; }
    // The tab key: on to the next tab stop, by the controls' tab indices, and from the last to the
    // first. Nothing happens if no control can take the focus.
    void FocusNext();
    // The same the other way round.
    void FocusPrevious();

  protected:
    template <typename Kind>
    Kind& Add(Text sName) {
        auto control = std::make_unique<Kind>(*this, std::move(sName));
        Kind& added = *control;
        m_controls.push_back(std::move(control));
        return added;
    }
    // An element of the array `sName`.
    template <typename Kind>
    Kind& AddElement(Text sName, std::int16_t nIndex) {
        Kind& added = Add<Kind>(std::move(sName));
        added.Control::m_nIndex = nIndex;
        return added;
    }

  private:
    friend class Control;
    bool HasArray(TextView sName) const;
    void GiveFocus(Control* control);
    void MoveFocusIfLost();
    std::vector<Control*> TabStops() const;
    Control* NextTabStop() const;

    template <typename Held, typename Given>
    void Assign(Held& held, const Given& value, TextView sProperty) {
        if (held == value) return;
        held = value;
        Changed(sProperty);
    }
    // Tells the view that the form's own property has a new value.
    void Changed(TextView sProperty);

    Text m_sClass;
    Text m_sCaption;
    std::int32_t m_nLeft = 0, m_nTop = 0, m_nWidth = 0, m_nHeight = 0;
    bool m_bVisible = false;
    bool m_bLive = false;
    Colour m_backColour;
    Control* m_focus = nullptr;
    std::vector<std::unique_ptr<Control>> m_controls;
    std::shared_ptr<Form> m_self{this, [](Form*) {}};  // owns nothing
};

}  // namespace nomira

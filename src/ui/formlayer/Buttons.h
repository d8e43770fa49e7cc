// Push buttons and radio buttons.
#pragma once

#include <functional>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"
#include "ui/formlayer/Picture.h"

namespace nomira {

class Button : public Control {
  public:
    using Control::Control;

    std::function<void()> onClick;

    const Text& Caption() const { return m_sCaption; }
    void SetCaption(TextView sCaption);
    // Shown only in the picture style; the second one while the button is disabled.
    const nomira::Picture& Picture() const { return m_picture; }
    void SetPicture(const nomira::Picture& picture);
    const nomira::Picture& DisabledPicture() const { return m_disabledPicture; }
    void SetDisabledPicture(const nomira::Picture& picture);
    // Whether the button can show pictures. Given at design time.
    bool PictureStyle() const { return m_bPictureStyle; }
    void SetPictureStyle(bool bPictureStyle) { m_bPictureStyle = bPictureStyle; }

    void UserClick() override;

  protected:
    bool TakesFocus() const override { return true; }

  private:
    Text m_sCaption;
    nomira::Picture m_picture, m_disabledPicture;
    bool m_bPictureStyle = false;
};

// One choice of several: the radio buttons of one container are a group, of which at most one is
// set.
class RadioButton : public Control {
  public:
    using Control::Control;

    // Runs at each new value that is set, by the program or the user; not when the choice of
    // another button takes the value away.
    std::function<void()> onClick;

    const Text& Caption() const { return m_sCaption; }
    void SetCaption(TextView sCaption);
    bool Value() const { return m_bValue; }
    // A button that is set takes the value from the others of its group first.
    void SetValue(bool bValue);

    void UserClick() override;

  protected:
    bool TakesFocus() const override { return true; }

  private:
    Text m_sCaption;
    bool m_bValue = false;
};

}  // namespace nomira

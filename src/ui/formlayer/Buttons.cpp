#include "ui/formlayer/Buttons.h"

#include "ui/formlayer/Form.h"

namespace nomira {

void Button::SetCaption(TextView sCaption) {
    Assign(m_sCaption, sCaption, u"Caption");
}

void Button::SetPicture(const nomira::Picture& picture) {
    Assign(m_picture, picture, u"Picture");
}

void Button::SetDisabledPicture(const nomira::Picture& picture) {
    Assign(m_disabledPicture, picture, u"DisabledPicture");
}

void Button::UserClick() {
    if (ReachedByUser()) Fire(onClick);
}

void RadioButton::SetCaption(TextView sCaption) {
    Assign(m_sCaption, sCaption, u"Caption");
}

void RadioButton::SetValue(bool bValue) {
    if (m_bValue == bValue) return;
    if (bValue) {
        Owner().ForEachControl([&](Control& control) {
            auto* other = As<RadioButton>(&control);
            if (other && other != this && other->Container() == Container())
                other->Assign(other->m_bValue, false, u"Value");
        });
    }
    Assign(m_bValue, bValue, u"Value");
    Fire(onClick);
}

void RadioButton::UserClick() {
    if (ReachedByUser()) SetValue(true);
}

}  // namespace nomira

// How the forms' routines reach what they know by name. All of it raises as Form::Get does for a
// form that lacks the control.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "langtools/BasicText.h"
#include "langtools/Text.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/Form.h"
#include "ui/formlayer/Picture.h"

namespace nomira {

inline constexpr TextView kProgramPattern = u"*.src";

inline constexpr TextView kNomiraMainClass = u"NomiraMain";
inline constexpr TextView kStdBofFormClass = u"StdBofForm";

// A form's kind is its class name.
inline bool IsDesktopForm(const Form& form) {
    return Equal(form.Class(), kNomiraMainClass);
}
inline bool IsPendantForm(const Form& form) {
    return Equal(form.Class(), kStdBofFormClass);
}

inline void SetVisible(const Form& form, std::initializer_list<TextView> names, bool bVisible) {
    for (const TextView sName : names)
        form.Get<Control>(sName).SetVisible(bVisible);
}
inline void SetEnabled(const Form& form, std::initializer_list<TextView> names, bool bEnabled) {
    for (const TextView sName : names)
        form.Get<Control>(sName).SetEnabled(bEnabled);
}

inline Button& SoftKey(const Form& form, std::int16_t nIndex) {
    return form.Get<Button>(u"SoftKey", nIndex);
}
inline Button& StatKeyL(const Form& form, std::int16_t nIndex) {
    return form.Get<Button>(u"StatKeyL", nIndex);
}

// Entry `nPlace`, one-based, of a picture list.
inline const Picture& Listed(const Form& form, TextView sList, std::int16_t nPlace) {
    return form.Get<PictureList>(sList).ListImages(nPlace).Picture;
}

}  // namespace nomira

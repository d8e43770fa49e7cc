#include "ui/PendantKeys.h"

#include "ui/FormAccess.h"
#include "ui/formlayer/PendantKeyControl.h"

namespace nomira {
namespace {

// The status keys 1 to 4, the soft keys 0 to 2, the soft keys 5 and 6.
constexpr PendantKeyControl::Range kRanges[] = {{129, 132}, {113, 115}, {118, 119}};

template <typename Operation>
void ForEachRange(const Form& form, Operation operation) {
    if (!IsPendantForm(form)) return;
    auto& keys = form.Get<PendantKeyControl>(u"TqpKeys");
    for (const auto& range : kRanges)
        (keys.*operation)(range.nFirst, range.nLast);
}

}  // namespace

void AddPendantKeys(const Form& form) {
    ForEachRange(form, &PendantKeyControl::AddFKeys);
}

void RemovePendantKeys(const Form& form) {
    ForEachRange(form, &PendantKeyControl::SubFKeys);
}

}  // namespace nomira

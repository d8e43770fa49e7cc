// The one thing that a program takes over from those ahead of it: the last long name that was seen
// in a header. "12: symName" is compared with it. So a program is first looked at as if nobody knew
// that name; if it has then asked for it, it is looked at once more, when its turn has come.
#pragma once

#include <optional>
#include <utility>

#include "conversion/TextImport.h"

namespace nomira::companion {

// Stands in g_vLongName for the unknown name. No header's name can be it, for a name ends at its
// quote.
inline constexpr TextView kUnknownName = u"'";

// What a look at a program gave, with what it has to do with the names ahead of it.
template <typename Result>
struct OnItsOwn {
    Result result;
    bool bAsked;                    // for the unknown name, so that the result is none
    std::optional<Text> sLastName;  // nullopt: it has seen none
};

// Whether a number without a name would be compared with it.
inline bool IsNameUnknown() {
    return g_vLongName == kUnknownName;
}

// Looks at a program in a thread that knows nothing of those ahead of it. `look(bAsked)` gives the
// result, and sets bAsked if a number without a name was seen while IsNameUnknown.
template <typename Look>
auto LookOnItsOwn(Look look) {
    Text sBefore = std::exchange(g_vLongName, Text(kUnknownName));  // where there is one thread
    bool bAsked = false;
    auto result = look(bAsked);
    std::optional<Text> sLast = std::exchange(g_vLongName, std::move(sBefore));
    if (*sLast == kUnknownName) sLast.reset();
    return OnItsOwn<decltype(result)>{std::move(result), bAsked, std::move(sLast)};
}

// The result when its turn has come: g_vLongName is what the programs ahead have left, and becomes
// what this one leaves.
template <typename Result, typename Look>
Result InItsTurn(OnItsOwn<Result> own, Look look) {
    if (own.bAsked) {
        bool bIgnored = false;
        return look(bIgnored);
    }
    if (own.sLastName) g_vLongName = std::move(*own.sLastName);
    return std::move(own.result);
}

}  // namespace nomira::companion

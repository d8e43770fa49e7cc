#include "adapters/sqlite/ConnectionText.h"

#include <algorithm>
#include <array>

#include "langtools/BasicText.h"

namespace nomira::sqlite {
namespace {

constexpr std::array<TextView, 2> kFileKeys{u"DBQ", u"Data Source"};
constexpr std::array<TextView, 2> kEngineTypeKeys{u"Jet OLEDB:Engine Type", u"Engine Type"};

// The value of the first pair with one of these keys; empty without one.
TextView ValueOf(TextView sConnectionText, const std::array<TextView, 2>& keys) {
    while (!sConnectionText.empty()) {
        const TextView sPair = sConnectionText.substr(0, sConnectionText.find(u';'));
        const std::size_t nEquals = sPair.find(u'=');
        const bool bWanted =
            nEquals != TextView::npos && std::any_of(keys.begin(), keys.end(), [&](TextView sKey) {
                return EqualNoCase(Trim(sPair.substr(0, nEquals)), sKey);
            });
        if (bWanted) return Trim(sPair.substr(nEquals + 1));
        sConnectionText.remove_prefix(std::min(sPair.size() + 1, sConnectionText.size()));
    }
    return {};
}

}  // namespace

TextView DatabasePath(TextView sConnectionText) {
    return ValueOf(sConnectionText, kFileKeys);
}

int EngineType(TextView sConnectionText) {
    const TextView sType = ValueOf(sConnectionText, kEngineTypeKeys);
    return sType.size() == 1 && sType[0] >= u'0' && sType[0] <= u'9' ? sType[0] - u'0' : 0;
}

}  // namespace nomira::sqlite

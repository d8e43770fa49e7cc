#include "adapters/rpc/Wire.h"

#include <cwchar>
#include <limits>
#include <locale>

#include "adapters/rpc/Base64.h"

namespace nomira::rpc {
namespace {

using Utf8 = std::codecvt<char16_t, char8_t, std::mbstate_t>;

constexpr std::size_t kMostBytesOfAUnit = 3;  // four bytes are two units

const Utf8& Converter() {
    return std::use_facet<Utf8>(std::locale::classic());
}

[[noreturn]] void Refuse(const char* sName, const char* sWhat) {
    throw WireError(std::string("\"") + sName + "\" " + sWhat);
}

// Looks at the line ahead of the parser, whose own callback for it takes a time that grows with the
// square of a list of objects.
void RequireBounds(std::string_view sLine) {
    int nDepth = 0;
    std::size_t nPieces = 0;
    bool bInText = false;
    for (std::size_t n = 0; n < sLine.size(); ++n) {
        const char c = sLine[n];
        if (bInText && c == '\\') ++n;
        if (c == '"') bInText = !bInText;
        if (bInText) continue;
        const bool bOpens = c == '[' || c == '{';
        if (bOpens) ++nDepth;
        if (c == ']' || c == '}') --nDepth;
        if (bOpens || c == ',') ++nPieces;
        if (nDepth > kMaxDepth) throw WireError("the JSON text is nested too deep");
        if (nPieces > kMaxPieces) throw WireError("the JSON text has too many pieces");
    }
}

}  // namespace

Json ParseLine(std::string_view sLine) {
    if (sLine.size() > kMaxLine) throw WireError("the line is too long");
    RequireBounds(sLine);
    try {
        return Json::parse(sLine.begin(), sLine.end());
    } catch (const Json::exception&) {
        throw WireError("the line is no JSON text");
    }
}

std::string LineOf(const Json& json) {
    return json.dump() + '\n';
}

std::string ToWire(TextView sText) {
    std::string sBytes(sText.size() * kMostBytesOfAUnit, '\0');
    auto* const pBytes = reinterpret_cast<char8_t*>(sBytes.data());
    std::mbstate_t state{};
    const char16_t* pRead = nullptr;
    char8_t* pWritten = nullptr;
    const auto result = Converter().out(state, sText.data(), sText.data() + sText.size(), pRead,
                                        pBytes, pBytes + sBytes.size(), pWritten);
    if (result != Utf8::ok || pRead != sText.data() + sText.size())
        throw WireError("a text holds half of a surrogate pair");
    sBytes.resize(static_cast<std::size_t>(pWritten - pBytes));
    return sBytes;
}

Text FromWire(std::string_view sBytes) {
    Text sText(sBytes.size(), u'\0');
    const auto* const pBytes = reinterpret_cast<const char8_t*>(sBytes.data());
    std::mbstate_t state{};
    const char8_t* pRead = nullptr;
    char16_t* pWritten = nullptr;
    const auto result = Converter().in(state, pBytes, pBytes + sBytes.size(), pRead, sText.data(),
                                       sText.data() + sText.size(), pWritten);
    if (result != Utf8::ok || pRead != pBytes + sBytes.size())
        throw WireError("a text is not UTF-8");
    sText.resize(static_cast<std::size_t>(pWritten - sText.data()));
    return sText;
}

const Json& Member(const Json& object, const char* sName) {
    if (!object.is_object()) Refuse(sName, "is to stand in an object, and there is none");
    const auto found = object.find(sName);
    if (found == object.end()) Refuse(sName, "is missing");
    return *found;
}

std::string StringMember(const Json& object, const char* sName) {
    const Json& member = Member(object, sName);
    if (!member.is_string()) Refuse(sName, "is no text");
    return member.get_ref<const std::string&>();
}

Text TextMember(const Json& object, const char* sName) {
    return FromWire(StringMember(object, sName));
}

std::int32_t NumberMember(const Json& object, const char* sName) {
    using Limits = std::numeric_limits<std::int32_t>;
    const Json& member = Member(object, sName);
    if (!member.is_number_integer()) Refuse(sName, "is no whole number");
    const bool bTooLarge =
        member.is_number_unsigned() && member.get<std::uint64_t>() > Limits::max();
    const auto n = member.get<std::int64_t>();
    if (bTooLarge || n > Limits::max() || n < Limits::min()) Refuse(sName, "has more than 32 bits");
    return static_cast<std::int32_t>(n);
}

bool BoolMember(const Json& object, const char* sName) {
    const Json& member = Member(object, sName);
    if (!member.is_boolean()) Refuse(sName, "is neither true nor false");
    return member.get<bool>();
}

std::string BytesMember(const Json& object, const char* sName) {
    const Json& member = Member(object, sName);
    if (!member.is_string()) Refuse(sName, "is no text");
    auto bytes = FromBase64(member.get_ref<const std::string&>());
    if (!bytes) Refuse(sName, "is no base64");
    return std::move(*bytes);
}

}  // namespace nomira::rpc

#include "adapters/rpc/RecordJson.h"

#include <utility>

namespace nomira::rpc {
namespace {

struct NumberField {
    const char* sName;
    std::int32_t MessageRecord::*member;
};
constexpr NumberField kNumbers[] = {
    {"nLowTimeStamp", &MessageRecord::nLowTimeStamp},
    {"nHighTimeStamp", &MessageRecord::nHighTimeStamp},
    {"nBiasTimeStamp", &MessageRecord::nBiasTimeStamp},
    {"eMessageType", &MessageRecord::eMessageType},
    {"nMessage", &MessageRecord::nMessage},
    {"nMessageHandle", &MessageRecord::nMessageHandle},
};

struct TextField {
    const char* sName;
    Text MessageRecord::*member;
};
constexpr TextField kTexts[] = {
    {"bstrDBModule", &MessageRecord::bstrDBModule},
    {"bstrCause", &MessageRecord::bstrCause},
    {"bstrDBMessage", &MessageRecord::bstrDBMessage},
};

struct ValueField {
    const char* sName;
    LinkValue MessageRecord::*member;
};
constexpr ValueField kValues[] = {
    {"varParams", &MessageRecord::varParams},
    {"varDBParams", &MessageRecord::varDBParams},
};

constexpr const char* kCauseIsFromDatabase = "bDBCause";

Json ValueToJson(const LinkValue& value) {
    if (const auto* pText = std::get_if<Text>(&value)) return ToWire(*pText);
    const auto* pArray = std::get_if<LinkArray>(&value);
    if (!pArray) return nullptr;
    Json elements = Json::array();
    for (const Text& sElement : pArray->elements)
        elements.push_back(ToWire(sElement));
    return {{"lower", pArray->nLowerBound}, {"elements", std::move(elements)}};
}

LinkValue ValueFromJson(const Json& json) {
    if (json.is_null()) return {};
    if (json.is_string()) return FromWire(json.get_ref<const std::string&>());
    LinkArray array;
    array.nLowerBound = NumberMember(json, "lower");
    const Json& elements = Member(json, "elements");
    if (!elements.is_array()) throw WireError("\"elements\" is no array");
    for (const Json& element : elements) {
        if (!element.is_string()) throw WireError("an element is no text");
        array.elements.push_back(FromWire(element.get_ref<const std::string&>()));
    }
    return array;
}

}  // namespace

Json RecordToJson(const MessageRecord& record) {
    Json json = Json::object();
    for (const NumberField& field : kNumbers)
        json[field.sName] = record.*field.member;
    for (const TextField& field : kTexts)
        json[field.sName] = ToWire(record.*field.member);
    json[kCauseIsFromDatabase] = record.bDBCause;
    for (const ValueField& field : kValues)
        json[field.sName] = ValueToJson(record.*field.member);
    return json;
}

MessageRecord RecordFromJson(const Json& json) {
    if (!json.is_object()) throw WireError("a message record is no object");
    MessageRecord record;
    for (const NumberField& field : kNumbers)
        if (json.contains(field.sName)) record.*field.member = NumberMember(json, field.sName);
    for (const TextField& field : kTexts)
        if (json.contains(field.sName)) record.*field.member = TextMember(json, field.sName);
    if (json.contains(kCauseIsFromDatabase))
        record.bDBCause = BoolMember(json, kCauseIsFromDatabase);
    for (const ValueField& field : kValues)
        if (json.contains(field.sName)) record.*field.member = ValueFromJson(json[field.sName]);
    return record;
}

}  // namespace nomira::rpc

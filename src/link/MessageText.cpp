#include "link/MessageText.h"

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

enum class Field {
    Handle,
    IsDatabaseCause,
    Cause,
    MessageKey,
    Module,
    Type,
    Bias,
    HighStamp,
    LowStamp,
    Number
};

Text FieldText(const MessageRecord& record, Field field) {
    switch (field) {
        case Field::Handle:
            return DecimalText(record.nMessageHandle);
        case Field::IsDatabaseCause:
            return record.bDBCause ? u"True" : u"False";
        case Field::Cause:
            return record.bstrCause;
        case Field::MessageKey:
            return record.bstrDBMessage;
        case Field::Module:
            return record.bstrDBModule;
        case Field::Type:
            return DecimalText(record.eMessageType);
        case Field::Bias:
            return DecimalText(record.nBiasTimeStamp);
        case Field::HighStamp:
            return DecimalText(record.nHighTimeStamp);
        case Field::LowStamp:
            return DecimalText(record.nLowTimeStamp);
        case Field::Number:
            break;
    }
    return DecimalText(record.nMessage);
}

// What stands ahead of a field, and which field.
struct Piece {
    TextView sLabel;
    Field field;
};

constexpr Piece kMessagePieces[] = {
    {u"", Field::Handle},      {u",", Field::IsDatabaseCause}, {u",", Field::Cause},
    {u",", Field::MessageKey}, {u",", Field::Module},          {u",", Field::Type},
    {u",", Field::Bias},       {u",", Field::HighStamp},       {u",", Field::LowStamp},
    {u",", Field::Number},
};

constexpr Piece kFailurePieces[] = {
    {u"Error: bDBCause=", Field::IsDatabaseCause},
    {u" , bstrCause=", Field::Cause},
    {u" , bstrDBMessage=", Field::MessageKey},
    {u" , bstrDBModule=", Field::Module},
    {u" , eMessageType=", Field::Type},
    {u" , nBiasTimeStamp=", Field::Bias},
    {u" , nHighTimeStamp=", Field::HighStamp},
    {u" , nLowTimeStamp=", Field::LowStamp},
    {u" , nMessage=", Field::Number},
    {u" , nMessageHandle=", Field::Handle},
};

template <std::size_t nPieces>
Text Joined(const Piece (&pieces)[nPieces], const MessageRecord& record) {
    Text sText;
    for (const Piece& piece : pieces)
        sText.append(piece.sLabel).append(FieldText(record, piece.field));
    return sText;
}

void AppendElements(Text& sText, const LinkArray& array, TextView sAheadOfIndex,
                    TextView sBehindIndex) {
    std::int64_t nIndex = array.nLowerBound;
    for (const Text& sElement : array.elements) {
        sText.append(sAheadOfIndex).append(DecimalText(nIndex++));
        sText.append(sBehindIndex).append(sElement);
    }
}

const LinkArray& RequireElements(const LinkValue& value) {
    const auto* array = std::get_if<LinkArray>(&value);
    if (!array) Raise(ErrorNumber::TypeMismatch);
    if (array->elements.empty()) Raise(ErrorNumber::SubscriptOutOfRange);
    return *array;
}

}  // namespace

Text MessageText(const MessageRecord& message) {
    Text sText = Joined(kMessagePieces, message);
    for (const LinkValue* value : {&message.varParams, &message.varDBParams})
        if (const auto* array = std::get_if<LinkArray>(value))
            AppendElements(sText, *array, u",", u"=");
    return sText;
}

Text FailureText(const MessageRecord& failure) {
    Text sText = Joined(kFailurePieces, failure);
    AppendElements(sText, RequireElements(failure.varParams), u" , varParams(", u") =");
    AppendElements(sText, RequireElements(failure.varDBParams), u" , varDBParams(", u") =");
    return sText;
}

}  // namespace nomira

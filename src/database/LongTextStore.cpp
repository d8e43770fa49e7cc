#include <algorithm>

#include "database/OpenRecordset.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

StoreObserver* g_observer = nullptr;

const OnProgramReset kReset([] { g_observer = nullptr; });

// The statements are word for word those of the controller software's own tools, down to blanks
// and parentheses. What is pasted in is not escaped.

Text FindStatement(TextView sModule, TextView sKey) {
    return u"SELECT Items.Key_id FROM Items WHERE (((Items.KeyString)='" + Text(sKey) +
           u"') AND ((Items.Module)='" + Text(sModule) + u"'))";
}

Text LookUpStatement(TextView sModule, TextView sKey) {
    return u"SELECT Items.Key_id FROM ITEMS WHERE ((Items.KeyString)='" + Text(sKey) +
           u"') AND ((Items.Module)='" + Text(sModule) + u"')";
}

Text ReadStatement(std::int32_t nKeyId) {
    return u"SELECT Messages.Key_id,Messages.Language_id, Messages.String FROM Messages"
           u" WHERE ( (Messages.Language_id=99) AND (Messages.Key_id)=" +
           DecimalText(nKeyId) + u")";
}

Text UpdateStatement(std::int32_t nKeyId) {
    return u"SELECT Messages.Key_id,Messages.Language_id, Messages.String FROM Messages"
           u" WHERE ((Messages.Language_id=99) AND (Messages.Key_id)=" +
           DecimalText(nKeyId) + u")";
}

Text DeleteStatement(TextView sPrefix) {
    return u"DELETE FROM Items WHERE (((Items.KeyString) Like '" + Text(sPrefix) + u"%'))";
}

enum class UpdateOutcome { NoMessage, Changed, Failed };

// `nKeyId` comes back as what the changed row says, and stays as it is otherwise.
UpdateOutcome TryUpdateMessage(std::int32_t& nKeyId, TextView sText, Connection* connection) {
    try {
        const OpenRecordset message(UpdateStatement(nKeyId), connection, CursorKind::Keyset,
                                    LockKind::Optimistic);
        message->SetField(u"String", Text(sText));
        message->Update();
        nKeyId = ToKeyId(message->Field(u"Key_Id"));
        message->Close();
        return UpdateOutcome::Changed;
    } catch (const RuntimeError& error) {
        return error.Number() == ErrorNumber::NoCurrentRecord ? UpdateOutcome::NoMessage
                                                              : UpdateOutcome::Failed;
    }
}

StoreOutcome StoreNewText(TextView sText, TextView sModule, TextView sKey) {
    std::int32_t nKeyId = 0;
    if (!InsertItem(sModule, sKey, nKeyId, g_Connection.get())) return StoreOutcome::Failed;
    return InsertMessage(nKeyId, sText, g_Connection.get()) ? StoreOutcome::Added
                                                            : StoreOutcome::ItemOnly;
}

// Updates the message of each row. A failure weighs more than a change, for the observer's sake;
// the store itself goes on over it.
StoreOutcome StoreKnownText(Recordset& items, TextView sText) {
    UpdateOutcome worst = UpdateOutcome::NoMessage;
    for (items.MoveFirst(); !items.Eof(); items.MoveNext()) {
        const FieldValue value = items.Field(u"Key_Id");
        if (IsNull(value)) continue;
        std::int32_t nKeyId = ToKeyId(value);
        worst = std::max(worst, TryUpdateMessage(nKeyId, sText, g_Connection.get()));
    }
    switch (worst) {
        case UpdateOutcome::NoMessage:
            return StoreOutcome::NoMessage;
        case UpdateOutcome::Changed:
            return StoreOutcome::Changed;
        default:
            return StoreOutcome::Failed;
    }
}

}  // namespace

std::int32_t FindKeyId(TextView sModule, TextView sKey, Connection* connection) {
    try {
        const OpenRecordset items(FindStatement(sModule, sKey), connection, CursorKind::Keyset,
                                  LockKind::Optimistic);
        if (items->Eof()) return 0;
        const std::int32_t nKeyId = ToKeyId(items->Field(u"Key_Id"));
        items->Close();
        return nKeyId;
    } catch (const RuntimeError&) {
        return 0;
    }
}

bool ReadMessageString(std::int32_t nKeyId, Text& sText, Connection* connection) {
    try {
        const OpenRecordset messages(ReadStatement(nKeyId), connection, CursorKind::Keyset,
                                     LockKind::Pessimistic);
        if (messages->Eof()) return false;
        sText = ToText(messages->Field(u"String"));
        messages->Close();
        return true;
    } catch (const RuntimeError&) {
        return false;
    }
}

bool InsertMessage(std::int32_t nKeyId, TextView sText, Connection* connection) {
    try {
        const OpenRecordset messages(u"Messages", connection, CursorKind::Keyset,
                                     LockKind::Pessimistic);
        messages->AddNew();
        messages->SetField(u"Key_Id", std::int64_t{nKeyId});
        messages->SetField(u"Language_id", std::int64_t{kLongTextLanguage});
        messages->SetField(u"String", Text(sText));
        messages->Update();
        messages->Close();
        return true;
    } catch (const RuntimeError&) {
        return false;
    }
}

bool InsertItem(TextView sModule, TextView sKey, std::int32_t& nKeyId, Connection* connection) {
    try {
        const OpenRecordset items(u"Items", connection, CursorKind::Keyset, LockKind::Optimistic);
        items->AddNew();
        items->SetField(u"Module", Text(sModule));
        items->SetField(u"KeyString", Text(sKey));
        items->Update();
        nKeyId = ToKeyId(items->Field(u"Key_Id"));
        items->Close();
        return true;
    } catch (const RuntimeError&) {
        return false;
    }
}

std::int32_t UpdateMessage(std::int32_t nKeyId, TextView sText, Connection* connection) {
    return TryUpdateMessage(nKeyId, sText, connection) == UpdateOutcome::Changed ? nKeyId : 0;
}

void DeleteItemsByPrefix(TextView sPrefix, TextView /*sModule*/, std::int16_t /*nSize*/) {
    try {
        const OpenRecordset none(DeleteStatement(sPrefix), g_Connection.get(), CursorKind::Static,
                                 LockKind::Pessimistic);
        // The statement gives no rows, so the recordset isn't open and this fails, every time.
        none->Close();
    } catch (const RuntimeError&) {
        // Nothing is left to do, whether the rows are gone or not.
    }
}

bool StoreLongText(TextView sText, TextView sModule, TextView sKey) {
    StoreOutcome outcome = StoreOutcome::Failed;
    bool bLookedUp = false;
    if (g_observer != nullptr && g_observer->IsHeld(sModule, sKey, sText)) {
        g_observer->TextStored(sModule, sKey, sText, StoreOutcome::Changed);
        return true;
    }
    try {
        const OpenRecordset items(LookUpStatement(sModule, sKey), g_Connection.get(),
                                  CursorKind::Static, LockKind::ReadOnly);
        outcome = items->Bof() && items->Eof() ? StoreNewText(sText, sModule, sKey)
                                               : StoreKnownText(*items, sText);
        items->Close();
        bLookedUp = true;
    } catch (const RuntimeError&) {
        // The outcome is as far as it came; the result is false.
    }
    if (g_observer != nullptr) g_observer->TextStored(sModule, sKey, sText, outcome);
    return bLookedUp;
}

Text ExportReadStatement(TextView sModule, TextView sPrefix) {
    return u"SELECT Items.KeyString, Messages.String"
           u" FROM Items INNER JOIN Messages ON Items.Key_id = Messages.Key_id"
           u" WHERE (((Items.Module)='" +
           Text(sModule) + u"') AND ((Messages.Language_id)=99) AND ((Items.KeyString) Like '" +
           Text(sPrefix) + u"%'))";
}

Text CatalogueReadStatement(TextView sModule, std::int32_t nLanguage) {
    return u"SELECT Items.KeyString, Messages.String, Messages.Language_id, Items.Module"
           u" FROM Items INNER JOIN Messages ON Items.Key_id = Messages.Key_id"
           u" WHERE (((Items.Module)='" +
           Text(sModule) + u"') AND ((Messages.Language_id)=" + DecimalText(nLanguage) + u"))";
}

void SetStoreObserver(StoreObserver* observer) {
    g_observer = observer;
}

}  // namespace nomira

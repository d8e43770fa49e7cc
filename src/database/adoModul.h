// The access layer of the message database: the one shared connection, the one-shot lookup, the
// long-text store, and the compaction of the file with the notice to the database process.
//
// No routine here shows a message or lets a failure out: each traps every run-time error and
// answers with false or 0. There are no transactions; each row is committed by itself. Nothing is
// escaped when a key goes into a statement: a key with an apostrophe makes the statement fail. A
// long text never goes into a statement, it is given to the row by field.
#pragma once

#include <cstdint>
#include <memory>

#include "database/DatabaseEngine.h"
#include "langtools/Text.h"

namespace nomira {

// The long texts of the controller's signals.
inline constexpr TextView kLongTextDatabase = u"C:\\tqx\\data\\orvo_con.mdb";
// The tool's own catalogue of user-interface texts; only read.
inline constexpr TextView kCatalogueDatabase = u"C:\\tqx\\data\\orvo_tab.mdb";
// Exists only while the long-text database is being compacted.
inline constexpr TextView kCompactionTempFile = u"C:\\TQX\\Data\\xxx_con.mdb";
// Language of the rows in which long texts live, whatever the user's language.
inline constexpr std::int32_t kLongTextLanguage = 99;

// The shared connection; empty when nothing is open.
extern std::unique_ptr<Connection> g_Connection;

// Opens the shared connection on the file, closing one that is open first. True if it is open
// now; otherwise g_Connection is empty.
bool OpenDatabase(TextView sPath);
// Closes and drops the shared connection; nothing happens without one.
void CloseDatabase();

// Looks a name up in the source that is set, or else through a connection of its own. True means
// only that the connection worked: a key that is absent, or has no text, leaves `sText` as the
// caller passed it.
bool ReadLongText(Text& sText, TextView sModule, TextView sKey);

// The key id of the first item with this module and key; 0 when absent or on failure. `connection`
// may be nullptr here and below, and the operation then fails.
std::int32_t FindKeyId(TextView sModule, TextView sKey, Connection* connection);
// The text of the key's first row in the long-text language. False, and `sText` untouched, if
// there is no such row, or its text is Null.
bool ReadMessageString(std::int32_t nKeyId, Text& sText, Connection* connection);
bool InsertMessage(std::int32_t nKeyId, TextView sText, Connection* connection);
// Adds an item and gives its key id, which the database has made; untouched on failure.
bool InsertItem(TextView sModule, TextView sKey, std::int32_t& nKeyId, Connection* connection);
// Changes the text of the key's first row in the long-text language. The key id, or 0 on failure:
// without such a row the text is lost, and no row is added.
std::int32_t UpdateMessage(std::int32_t nKeyId, TextView sText, Connection* connection);

// Deletes the items whose key begins with the prefix, of any module; `_` in the prefix stands for
// any character there, as in the statement's Like. Works on g_Connection. Neither the module nor
// the size is used: the statement tests the key alone.
void DeleteItemsByPrefix(TextView sPrefix, TextView sModule, std::int16_t nSize);

// Inserts or updates: a new key gets an item and a message, a known one its message changed (that
// of each item, should the pair of key and module occur more than once). Works on g_Connection.
// False only if the look-up itself fails; an item that has no message keeps none, and the result
// is true all the same.
bool StoreLongText(TextView sText, TextView sModule, TextView sKey);

// The statements, as they go to the engine.
Text ExportReadStatement(TextView sModule, TextView sPrefix);
Text CatalogueReadStatement(TextView sModule, std::int32_t nLanguage);

// Writes a compacted copy beside the long-text database and puts it in its place. Says nothing on
// failure: a copy that is left over from an earlier try makes every later try end at once, and a
// rename that fails after the delete leaves the data under the temporary name only.
void CompactLongTextDatabase();

// Tells the controller's database process, if one runs, to read the message file again.
void NotifyDatabaseChanged();

// Knows the long texts ahead of the database, for whoever looks up thousands of them.
class LongTextSource {
  public:
    virtual ~LongTextSource() = default;
    // What ReadLongText is to do. Several threads may ask at once.
    virtual bool Read(Text& sText, TextView sModule, TextView sKey) const = 0;
};
// For all threads, while none looks up. With nullptr, the start value, the database is asked. Not
// owned.
void SetLongTextSource(const LongTextSource* source);

// What became of one text, for whoever watches the store.
enum class StoreOutcome {
    Added,      // a new key, stored
    Changed,    // a known key, its text set (also to the same text)
    NoMessage,  // a known key without a message row: the text is lost
    ItemOnly,   // a new key whose message could not be added
    Failed,     // nothing could be done
};

// Watches the store; the companion reports with it. Does nothing by itself.
class StoreObserver {
  public:
    virtual ~StoreObserver() = default;
    // Asked ahead of each text: whether every item of the name is known to hold just this text, so
    // that to store it would change nothing. It is told as Changed then, without a look into the
    // database.
    virtual bool IsHeld(TextView /*sModule*/, TextView /*sKey*/, TextView /*sText*/) {
        return false;
    }
    virtual void TextStored(TextView sModule, TextView sKey, TextView sText,
                            StoreOutcome outcome) = 0;
};
// nullptr, the start value, watches nothing. Not owned.
void SetStoreObserver(StoreObserver* observer);

}  // namespace nomira

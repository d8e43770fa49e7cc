#include "database/adoModul.h"
#include "frame/KillProcess.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"

namespace nomira {
namespace {

constexpr TextView kDatabaseProcess = u"OrvoDB";

// A directory look-up with normal attributes: a hidden file counts as absent.
bool FileExists(TextView sPath) {
    return !TheFiles().Dir(sPath, AttributeNormal).empty();
}

Text DataSource(TextView sPath) {
    return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + Text(sPath);
}

// The old file format, whatever the file had before: the controller software can't read others.
constexpr TextView kEngineType = u";Jet OLEDB:Engine Type=4";

}  // namespace

void CompactLongTextDatabase() {
    try {
        DatabaseEngine& engine = TheDatabaseEngine();
        if (!FileExists(kLongTextDatabase)) return;
        engine.CompactDatabase(DataSource(kLongTextDatabase),
                               DataSource(kCompactionTempFile) + Text(kEngineType));
        if (!FileExists(kCompactionTempFile)) return;
        TheFiles().Kill(kLongTextDatabase);
        TheFiles().Name(kCompactionTempFile, kLongTextDatabase);
    } catch (const RuntimeError&) {
        // The operator is told nothing; what is left depends on the step that failed.
    }
}

void NotifyDatabaseChanged() {
    if (IsProcessRunning(kDatabaseProcess)) TheClosedLibrary().RefreshConfDb();
}

}  // namespace nomira

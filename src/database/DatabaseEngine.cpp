#include "database/DatabaseEngine.h"

#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

DatabaseEngine* g_engine = nullptr;

}  // namespace

void SetDatabaseEngine(DatabaseEngine* engine) {
    g_engine = engine;
}

DatabaseEngine& TheDatabaseEngine() {
    if (g_engine == nullptr) Raise(ErrorNumber::ObjectNotSet);
    return *g_engine;
}

}  // namespace nomira

#include "userprogram/FoldObserver.h"

#include "langtools/ProgramState.h"

namespace nomira {
namespace {

thread_local FoldObserver* g_observer = nullptr;

const OnProgramReset g_reset{[] { g_observer = nullptr; }};

}  // namespace

void SetFoldObserver(FoldObserver* observer) {
    g_observer = observer;
}

FoldObserver& TheFoldObserver() {
    static FoldObserver nobody;
    return g_observer ? *g_observer : nobody;
}

}  // namespace nomira

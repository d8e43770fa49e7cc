#include "ui/formlayer/FormLayer.h"

#include <algorithm>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

using Forms = std::vector<std::unique_ptr<Form>>;

Forms g_forms;
View* g_view = nullptr;

Forms::iterator Locate(TextView sClass) {
    return std::find_if(g_forms.begin(), g_forms.end(),
                        [&](const auto& form) { return Equal(form->Class(), sClass); });
}

const OnProgramReset g_reset{[] {
    g_forms.clear();
    g_view = nullptr;
}};

}  // namespace

Form& LoadForm(std::unique_ptr<Form> form) {
    if (FindForm(form->Class())) Raise(ErrorNumber::KeyAlreadyUsed);
    Form& loaded = *form;
    g_forms.push_back(std::move(form));
    try {
        loaded.Load();
    } catch (...) {
        UnloadForm(loaded.Class());
        throw;
    }
    return loaded;
}

void UnloadForm(TextView sClass) {
    const auto place = Locate(sClass);
    if (place == g_forms.end()) return;
    const std::unique_ptr<Form> form = std::move(*place);
    g_forms.erase(place);
    if (g_view) g_view->FormUnloaded(*form);
}

Form* FindForm(TextView sClass) {
    const auto place = Locate(sClass);
    return place == g_forms.end() ? nullptr : place->get();
}

bool AnyFormVisible() {
    return std::any_of(g_forms.begin(), g_forms.end(),
                       [](const auto& form) { return form->Visible(); });
}

void SetView(View* view) {
    g_view = view;
}

View* TheView() {
    return g_view;
}

void ProcessPendingEvents() {
    if (g_view) g_view->ProcessPendingEvents();
}

}  // namespace nomira

#include "WindowFixture.h"

#include <gtk/gtk.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/listbox.h>
#include <wx/radiobut.h>
#include <wx/textctrl.h>
#include <wx/treectrl.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "adapters/wx/Lengths.h"
#include "adapters/wx/Surface.h"
#include "adapters/wx/WxText.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/Picture.h"
#include "ui/formlayer/TreeView.h"

namespace nomira::wx {
namespace {

// One for the process: the toolkit can be started once.
struct Screen {
    testing::VirtualDisplay display;
    Toolkit toolkit;
};

void UseScreen() {
    static Screen screen;
    ASSERT_TRUE(screen.toolkit.IsReady());
}

// The caption as the operator reads it: without the breaks that make it fit.
Text ShownCaption(const wxWindow& window) {
    wxString sLabel = wxControl::RemoveMnemonics(window.GetLabel());
    sLabel.Replace("\n", " ");
    return FromWx(sLabel);
}

template <typename Kind>
void ExpectCaption(Control& control, const wxWindow& window) {
    const auto* captioned = As<Kind>(&control);
    if (captioned) {
        EXPECT_EQ(ShownCaption(window), captioned->Caption());
    }
}

void ExpectList(SelectionList& list, const wxWindow& window) {
    const auto& box = dynamic_cast<const wxListBox&>(window);
    ASSERT_EQ(static_cast<int>(box.GetCount()), list.ListCount());
    for (std::int16_t n = 0; n < list.ListCount(); ++n) {
        EXPECT_EQ(FromWx(box.GetString(n)), list.List(n));
        EXPECT_EQ(box.IsSelected(n), list.Selected(n)) << n;
    }
}

void ExpectTree(TreeView& tree, const wxWindow& window) {
    const auto& shown = dynamic_cast<const wxTreeCtrl&>(window);
    EXPECT_EQ(static_cast<int>(shown.GetCount()), tree.Nodes().Count());
    if (tree.SelectedItem()) {
        EXPECT_EQ(FromWx(shown.GetItemText(shown.GetSelection())), tree.SelectedItem()->Text());
    }
}

void ExpectContent(Control& control, const wxWindow& window) {
    ExpectCaption<Button>(control, window);
    ExpectCaption<RadioButton>(control, window);
    ExpectCaption<CheckBox>(control, window);
    ExpectCaption<Label>(control, window);
    if (auto* box = As<TextBox>(&control)) {
        EXPECT_EQ(FromWxLines(dynamic_cast<const wxTextCtrl&>(window).GetValue()), box->Text());
    }
    if (auto* button = As<RadioButton>(&control)) {
        EXPECT_EQ(dynamic_cast<const wxRadioButton&>(window).GetValue(), button->Value());
    }
    if (auto* box = As<CheckBox>(&control)) {
        EXPECT_EQ(dynamic_cast<const wxCheckBox&>(window).GetValue(), box->Value() != 0);
    }
    if (auto* drives = As<DriveListBox>(&control)) {
        EXPECT_EQ(FromWx(dynamic_cast<const wxChoice&>(window).GetStringSelection()),
                  drives->Drive());
    }
    if (auto* list = As<SelectionList>(&control)) ExpectList(*list, window);
    if (auto* tree = As<TreeView>(&control)) ExpectTree(*tree, window);
}

bool HasWindow(Control& control) {
    return !As<PictureList>(&control) && !As<PendantKeyControl>(&control) && !As<Shape>(&control);
}

}  // namespace

WindowTest::WindowTest() {
    UseScreen();
    view = std::make_unique<WxView>();
    SetView(view.get());
}

WindowTest::~WindowTest() {
    SetView(nullptr);
    view.reset();
}

void WindowTest::Settle() {
    for (int n = 0; n < 20; ++n) {
        view->ProcessPendingEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void WindowTest::Robot(const std::string& sWords) {
    ASSERT_EQ(std::system(("xdotool " + sWords).c_str()), 0) << sWords;
    Settle();
}

void WindowTest::Click(const Control& control, int nTimes) {
    const wxSize size = view->WindowOf(control)->GetSize();
    ClickAt(control, size.x / 2, size.y / 2, nTimes);
}

void WindowTest::ClickAt(const Control& control, int nX, int nY, int nTimes) {
    Settle();
    const wxPoint place = view->WindowOf(control)->GetScreenPosition() + wxPoint(nX, nY);
    Robot("mousemove " + std::to_string(place.x) + " " + std::to_string(place.y) +
          " click --repeat " + std::to_string(nTimes) + " --delay 30 1");
}

void WindowTest::TakeScreenshot(const Form& form, const std::string& sName) {
    Settle();
    const wxFrame* frame = view->FrameOf(form);
    ASSERT_NE(frame, nullptr);
    GdkWindow* shown = gtk_widget_get_window(static_cast<GtkWidget*>(frame->GetHandle()));
    GdkPixbuf* picture = gdk_pixbuf_get_from_window(shown, 0, 0, gdk_window_get_width(shown),
                                                    gdk_window_get_height(shown));
    ASSERT_NE(picture, nullptr);
    std::filesystem::create_directories(NOMIRA_SCREENSHOTS);
    const std::string sFile = NOMIRA_SCREENSHOTS "/" + sName + ".png";
    EXPECT_TRUE(gdk_pixbuf_save(picture, sFile.c_str(), "png", nullptr, nullptr)) << sFile;
    g_object_unref(picture);
}

void WindowTest::ExpectInStep(const Form& form) {
    view->ShowChanges();
    const FormWindow* frame = view->FrameOf(form);
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(frame->IsPainted());
    EXPECT_EQ(FromWx(frame->GetTitle()), form.Caption());
    EXPECT_EQ(frame->GetClientSize(), PlaceOf(form).GetSize());
    form.ForEachControl([&](Control& control) {
        SCOPED_TRACE(::testing::PrintToString(control.FullName()));
        const wxWindow* window = view->WindowOf(control);
        ASSERT_EQ(window != nullptr, HasWindow(control));
        if (!window) return;
        EXPECT_EQ(window->GetRect(), PlaceOf(control));
        EXPECT_EQ(window->IsShown(), control.Visible());
        EXPECT_EQ(window->IsThisEnabled(), control.Enabled());
        ExpectContent(control, *window);
    });
}

}  // namespace nomira::wx

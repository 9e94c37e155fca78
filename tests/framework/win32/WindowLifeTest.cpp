// Ends in the wrong moment: windows and controls that go while their own messages are handled.
#include "oak/framework/Timer.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

class WindowLife : public TWin32Test {};

int CountWindows() {
  int count = 0;
  const auto one = [](HWND, LPARAM result) -> BOOL {
    ++*reinterpret_cast<int*>(result);
    return TRUE;
  };
  ::EnumThreadWindows(::GetCurrentThreadId(), one, reinterpret_cast<LPARAM>(&count));
  return count;
}

struct TCrowdedForm : TTestForm {
  TCrowdedForm() {
    for (TWinControl* const control :
         std::initializer_list<TWinControl*>{Edit, Combo, Button, Panel})
      control->SetParent(this);
    Combo->AddItem({u"a", -1, -1, 0, nullptr});
    Show();
  }
  TEdit* Edit = new TEdit;
  TCustomComboBoxEx* Combo = new TCustomComboBoxEx;
  TButton* Button = new TButton;
  TPanel* Panel = new TPanel;
};

TEST_F(WindowLife, ControlsAndFormsEndInTheirOwnEvents) {
  using TDeed = std::function<void(TWinControl*)>;
  const std::pair<const char*, std::function<void(TCrowdedForm&, TDeed)>> events[] = {
      {"change",
       [](TCrowdedForm& f, TDeed deed) {
         f.Edit->OnChange = [=, &f](auto&&...) { deed(f.Edit); };
         Type(f.Edit->GetHandle(), u"abc");
       }},
      {"select",
       [](TCrowdedForm& f, TDeed deed) {
         f.Combo->OnSelect = [=, &f](auto&&...) { deed(f.Combo); };
         f.Combo->SetFocus();
         PressKey(::GetFocus(), VK_DOWN);
       }},
      {"click",
       [](TCrowdedForm& f, TDeed deed) {
         f.Button->OnClick = [=, &f](auto&&...) { deed(f.Button); };
         Click(f.Button->GetHandle(), 5, 5);
       }},
      {"exit",
       [](TCrowdedForm& f, TDeed deed) {
         f.Button->SetFocus();
         f.Button->OnExit = [=, &f](auto&&...) { deed(f.Button); };
         f.Edit->SetFocus();
       }},
      {"paint",
       [](TCrowdedForm& f, TDeed deed) {
         f.Panel->OnPaint = [=, &f](auto&&...) { deed(f.Panel); };
         ::RedrawWindow(f.Panel->GetHandle(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
       }},
      {"resize",
       [](TCrowdedForm& f, TDeed deed) {
         f.Panel->OnResize = [=, &f](auto&&...) { deed(f.Panel); };
         ::SetWindowPos(f.Panel->GetHandle(), nullptr, 3, 3, 77, 55, SWP_NOZORDER);
       }},
      {"deactivate",
       [](TCrowdedForm& f, TDeed deed) {
         f.OnDeactivate = [=, &f](auto&&...) { deed(&f); };
         ::SendMessageW(f.GetHandle(), WM_ACTIVATE, WA_INACTIVE, 0);
       }},
      {"close",
       [](TCrowdedForm& f, TDeed deed) {
         f.OnCloseQuery = [=, &f](auto&&...) { deed(&f); };
         ::SendMessageW(f.GetHandle(), WM_CLOSE, 0, 0);
       }},
  };
  enum { Destroy, DestroyForm, Renew, RenewForm, DeedCount };
  const int before = CountWindows();
  for (const auto& [name, happen] : events)
    for (int what = Destroy; what < DeedCount; ++what) {
      SCOPED_TRACE(name + (", deed " + std::to_string(what)));
      auto* form = new TCrowdedForm;
      const TLifeGuard guard = form->GetLifeGuard();
      HWND window = nullptr;
      happen(*form, [&](TWinControl* control) {
        if (window) return;
        window = control->GetHandle();
        if (what == Destroy) delete control;
        if (what == DestroyForm) delete form;
        if (what == Renew) control->RecreateWnd();
        if (what == RenewForm) form->RecreateWnd();
      });
      Pump();
      EXPECT_NE(window, nullptr) << "the event did not come";
      EXPECT_FALSE(::IsWindow(window) && what != RenewForm);
      if (guard.IsAlive()) delete form;
      EXPECT_EQ(CountWindows(), before);
    }
}

TEST_F(WindowLife, AnEditWithANewWindowGoesOnWhereItWas) {
  TCrowdedForm form;
  TEdit& edit = *form.Edit;
  edit.SetFocus();
  edit.OnChange = [&](TObject*) { edit.RecreateWnd(); };
  const HWND former = edit.GetHandle();
  Type(former, u"a");
  EXPECT_FALSE(::IsWindow(former));
  EXPECT_EQ(WindowText(edit.GetHandle()), u"a");
  EXPECT_TRUE(edit.Focused());
  edit.OnChange = [&](TObject*) { form.RecreateWnd(); };
  edit.SelectText(1, 0);
  Type(edit.GetHandle(), u"b");
  EXPECT_EQ(WindowText(edit.GetHandle()), u"ab");
}

TEST_F(WindowLife, TimersEndAtOnce) {
  int ticks = 0;
  auto other = std::make_unique<TTimer>();
  TTimer timer;
  timer.SetInterval(1);
  other->SetInterval(1);
  bool late = false;
  other->OnTimer = [&](TObject*) { late = true; };
  timer.OnTimer = [&](TObject*) {
    other.reset();
    late = false;
    if (++ticks == 3) timer.SetEnabled(false);
  };
  PumpUntil([&] { return ticks >= 3; });
  EXPECT_FALSE(late);
  // A later timer proves that the ended ones are silent.
  bool after = false;
  TTimer sentinel;
  sentinel.SetInterval(20);
  sentinel.OnTimer = [&](TObject*) { after = true; };
  PumpUntil([&] { return after; });
  EXPECT_EQ(ticks, 3);
}

}  // namespace
}  // namespace oak::tests

#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/Dialogs.h"
#include "oak/framework/Host.h"
#include "oak/framework/Menus.h"
#include "oak/framework/StdCtrls.h"
#include "oak/framework/Styles.h"
#include "oak/framework/Timer.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

class FormTest : public TScreenTest {
 protected:
  /// Lets a form write down what happens to it.
  void Listen(TForm& form, const std::string& name) {
    auto note = [this, name](const char* what) {
      return [this, name, what](TObject*) { log.push_back(name + what); };
    };
    form.OnShow = note(" show");
    form.OnHide = note(" hide");
    form.OnActivate = note(" activate");
    form.OnDeactivate = note(" deactivate");
    form.OnDestroy = note(" destroy");
  }
  TLog log;
};

// --- life ------------------------------------------------------------------------------
TEST_F(FormTest, TellsOfEachStepOfItsLife) {
  auto* one = new TPlainForm;
  Listen(*one, "one");
  one->Show();
  EXPECT_THAT(log, ElementsAre("one show", "one activate"));
  EXPECT_EQ(Screen().GetActiveForm(), one);
  log.clear();
  TPlainForm two;
  two.Show();
  EXPECT_THAT(log, ElementsAre("one deactivate"));
  screen->ActivateWindow(*one);
  log.clear();
  one->RecreateWnd();
  EXPECT_TRUE(log.empty()) << "a new window is nobody's business";
  one->Hide();
  screen.Drain();
  EXPECT_THAT(log, ElementsAre("one hide", "one deactivate"));
  EXPECT_EQ(Screen().GetActiveForm(), &two);
  log.clear();
  delete one;
  EXPECT_THAT(log, ElementsAre("one destroy"));
  EXPECT_EQ(Screen().GetFormCount(), 1);
}

TEST_F(FormTest, ClosesAsItsEventsSay) {
  struct TCase {
    bool CanClose;
    TCloseAction Action;
    bool Visible;
    TWindowState State;
    bool Gone;
  };
  const TCase cases[] = {{false, caHide, true, wsNormal, false},
                         {true, caNone, true, wsNormal, false},
                         {true, caHide, false, wsNormal, false},
                         {true, caMinimize, true, wsMinimized, false},
                         {true, caFree, false, wsNormal, true}};
  for (const TCase& c : cases) {
    auto* form = new TPlainForm;
    form->OnCloseQuery = [&](TObject*, bool& canClose) { canClose = c.CanClose; };
    form->OnClose = [&](TObject*, TCloseAction& action) { action = c.Action; };
    form->Show();
    const TLifeGuard guard = form->GetLifeGuard();
    screen->Later([&] {
      form->Close();
      EXPECT_TRUE(guard.IsAlive()) << "not before its handler has returned";
      EXPECT_EQ(form->GetVisible(), c.Visible);
      EXPECT_EQ(form->GetWindowState(), c.State);
    });
    screen.Drain();
    EXPECT_EQ(!guard.IsAlive(), c.Gone) << c.Action;
    if (guard.IsAlive()) delete form;
  }
}

TEST_F(FormTest, IsReleasedAfterItsHandlerEvenFromALoopWithin) {
  auto* form = new TPlainForm;
  auto* button = new TButton;
  button->SetParent(form);
  const TLifeGuard guard = form->GetLifeGuard();
  bool aliveWithin = false;
  button->OnClick = [&](TObject*) {
    form->Release();
    form->Release();
    Application().ProcessMessages();
    aliveWithin = guard.IsAlive();
  };
  form->Show();
  screen->Click(*button, {3, 3});
  EXPECT_TRUE(aliveWithin);
  EXPECT_FALSE(guard.IsAlive());
}

TEST_F(FormTest, GoesWithAllThatIsPending) {
  for (const bool released : {false, true}) {
    auto* form = new TPlainForm;
    auto* timer = new TTimer(form);
    timer->SetInterval(10);
    int ticks = 0;
    timer->OnTimer = [&](TObject*) { ++ticks; };
    TLog notes;
    auto* control = new TProbe(form, &notes);
    auto* edit = new TEdit;
    edit->SetParent(form);
    form->Show();
    edit->SetFocus();
    screen.Advance(25);
    EXPECT_EQ(ticks, 2);
    screen->MouseMove(control->ClientToScreen({2, 2}));
    screen->MouseDown();
    ASSERT_TRUE(control->GetMouseCapture());
    control->PostMessage(FirstPrivateMessage);
    control->SetHint(u"hint");
    control->SetShowHint(true);
    released ? form->Release() : delete form;
    screen.Advance(1000);
    screen->MouseUp();
    EXPECT_LE(ticks, 2);
    EXPECT_EQ(Screen().GetFormCount(), 0);
    EXPECT_EQ(screen->GetTimerCount(), 0u);
  }
}

TEST_F(FormTest, MayBeDestroyedInItsOwnEvents) {
  const char* names[] = {"OnShow", "OnActivate", "OnDeactivate", "OnHide", "OnCloseQuery",
                         "OnClose"};
  for (const std::string name : names) {
    SCOPED_TRACE(name);
    auto* form = new TPlainForm;
    bool ended = false;
    auto end = [&](auto&&...) {
      delete form;
      ended = true;
    };
    if (name == "OnShow") form->OnShow = end;
    if (name == "OnActivate") form->OnActivate = end;
    if (name == "OnDeactivate") form->OnDeactivate = end;
    if (name == "OnHide") form->OnHide = end;
    if (name == "OnCloseQuery") form->OnCloseQuery = end;
    if (name == "OnClose") form->OnClose = end;
    form->Show();
    TPlainForm other;
    if (!ended) other.Show();
    if (!ended) screen->CloseWindow(*form);
    screen.Drain();
    EXPECT_TRUE(ended);
  }
}

// --- place -------------------------------------------------------------------------------
TEST_F(FormTest, FindsItsFirstPlace) {
  TForm placed, centered, first;
  placed.SetBounds(11, 22, 200, 100);
  centered.SetPosition(poScreenCenter);
  centered.SetBounds(0, 0, 200, 100);
  placed.Show();
  centered.Show();
  first.Show();
  const TRect area = Screen().GetWorkArea();
  EXPECT_EQ(placed.GetBoundsRect().TopLeft(), TPoint(11, 22));
  EXPECT_EQ(centered.GetBoundsRect().Center(), area.Center());
  EXPECT_GT(first.GetLeft(), 0) << "one does not hide the other";
  centered.SetBounds(5, 5, 200, 100);
  centered.Hide();
  centered.Show();
  EXPECT_EQ(centered.GetLeft(), 5) << "the user's place is kept";
}

TEST_F(FormTest, FollowsTheDensityOfItsMonitor) {
  screen->SetMonitors({{{0, 0, 1920, 1080}, {0, 0, 1920, 1040}, 96, true},
                       {{1920, 0, 4800, 1620}, {1920, 0, 4800, 1620}, 144, false}});
  TPlainForm form;
  auto* panel = new TPanel;
  panel->SetAlign(alBottom);
  panel->SetHeight(40);
  panel->SetParent(&form);
  auto* button = new TButton(&form);
  button->SetParent(&form);
  button->SetBounds(10, 20, 80, 24);
  auto* anchored = new TButton(&form);
  anchored->SetParent(&form);
  anchored->SetAnchors({akTop, akRight});
  form.Show();
  anchored->SetBounds(form.GetClientSize().Width - 60, 0, 50, 20);
  button->GetFont().SetSize(12);
  int seenPPI = 0;
  class TScaled : public TProbe {
   public:
    TScaled(TWinControl* parent, int* seen) : TProbe(parent), fSeen(seen) {}
    void ChangeScale(int m, int d) override {
      *fSeen = GetCurrentPPI();
      EXPECT_EQ(m, 144);
      EXPECT_EQ(d, 96);
      TProbe::ChangeScale(m, d);
    }
    int* fSeen;
  };
  auto* scaled = new TScaled(&form, &seenPPI);
  const int width = form.GetWidth();
  screen->MoveToMonitor(form, 1);
  EXPECT_EQ(seenPPI, 144) << "the density is known before the sizes change";
  EXPECT_EQ(form.GetCurrentPPI(), 144);
  EXPECT_EQ(form.GetWidth(), MulDiv(width, 144, 96));
  EXPECT_EQ(BoundsOf(*button), TRect(15, 30, 135, 66));
  EXPECT_EQ(button->GetFont().GetSize(), 12);
  EXPECT_EQ(button->GetFont().GetPixelsPerInch(), 144);
  EXPECT_EQ(panel->GetHeight(), 60);
  EXPECT_EQ(panel->GetBoundsRect().Bottom, form.GetClientSize().Height);
  EXPECT_EQ(form.GetClientSize().Width - anchored->GetBoundsRect().Right, 15);
  EXPECT_EQ(scaled->GetWidth(), 75);
  EXPECT_EQ(button->ScaledPixels(10), 15);

  auto* late = new TButton;  // designed for 96 like the others
  late->SetBounds(0, 0, 100, 20);
  late->SetParent(&form);
  EXPECT_EQ(late->GetWidth(), 150);

  screen->MoveToMonitor(form, 0);
  EXPECT_EQ(form.GetWidth(), width);
  EXPECT_EQ(BoundsOf(*button), TRect(10, 20, 90, 44));
  EXPECT_EQ(button->GetFont().GetSize(), 12);

  TPlainForm fixed;
  fixed.SetScaled(false);
  fixed.Show();
  screen->MoveToMonitor(fixed, 1);
  EXPECT_EQ(fixed.GetCurrentPPI(), 96);
}

TEST_F(FormTest, ASplitterSizesItsNeighbour) {
  for (const TAlign align : {alLeft, alRight, alTop, alBottom}) {
    SCOPED_TRACE(align);
    TPlainForm form;
    form.SetFormBorderStyle(bsFormNone);
    auto* pane = new TPanel;
    pane->SetBounds(0, 0, 100, 100);
    auto* splitter = new TSplitter;
    auto* rest = new TPanel;
    pane->SetParent(&form);
    splitter->SetParent(&form);
    rest->SetParent(&form);
    pane->SetAlign(align);
    splitter->SetAlign(align);
    rest->SetAlign(alClient);
    form.Show();
    ASSERT_EQ(splitter->FindControl(), pane);
    const bool vertical = align == alLeft || align == alRight;
    const int sign = align == alLeft || align == alTop ? 1 : -1;
    auto size = [&] { return vertical ? pane->GetWidth() : pane->GetHeight(); };
    auto by = [&](int pixels) {
      return vertical ? TPoint(2 + sign * pixels, 2) : TPoint(2, 2 + sign * pixels);
    };
    int moved = 0;
    splitter->OnMoved = [&](TObject*) { ++moved; };
    screen->Drag(*splitter, {2, 2}, *splitter, by(40));
    EXPECT_EQ(size(), 140);
    screen->Drag(*splitter, {2, 2}, *splitter, by(-400));
    EXPECT_EQ(size(), 30) << "the least size";
    screen->Drag(*splitter, {2, 2}, *splitter, by(900));
    EXPECT_EQ(vertical ? rest->GetWidth() : rest->GetHeight(), 30);
    EXPECT_EQ(moved, 3);
    splitter->OnCanResize = [](TObject*, int& newSize, bool& accept) {
      accept = newSize < 100;
      newSize = newSize / 10 * 10;
    };
    screen->Drag(*splitter, {2, 2}, *splitter, by(-(size() - 87)));
    EXPECT_EQ(size(), 80);
    splitter->OnCanResize = [&](TObject*, int&, bool&) { delete std::exchange(pane, nullptr); };
    screen->Drag(*splitter, {2, 2}, *splitter, by(10));
    EXPECT_EQ(splitter->FindControl(), nullptr);
  }
}

// --- modal -------------------------------------------------------------------------------
TEST_F(FormTest, RunsModallyUntilItHasAResult) {
  TPlainForm owner, dialog;
  owner.Show();
  auto* ok = new TButton;
  ok->SetParent(&dialog);
  ok->SetModalResult(mrOk);
  int ownerClicks = 0;
  owner.OnClick = [&](TObject*) { ++ownerClicks; };
  screen->Later([&] { screen->Click({owner.GetBoundsRect().Right - 30, 350}); });
  screen->Later([&] { screen->Click(*ok, {3, 3}); });
  dialog.SetBounds(600, 100, 200, 200);
  EXPECT_EQ(dialog.ShowModal(), mrOk);
  EXPECT_EQ(ownerClicks, 0) << "the others wait";
  EXPECT_FALSE(dialog.GetVisible());
  EXPECT_TRUE(owner.IsActive());

  int asked = 0;
  dialog.OnCloseQuery = [&](TObject*, bool& canClose) { canClose = ++asked > 1; };
  screen->Later([&] { dialog.SetModalResult(mrYes); });
  screen->Later([&] {
    EXPECT_EQ(dialog.GetModalResult(), mrNone) << "refused once";
    dialog.Close();
  });
  EXPECT_EQ(dialog.ShowModal(), mrCancel);
  EXPECT_EQ(asked, 2);
  dialog.OnCloseQuery = nullptr;

  screen->Later([&] { dialog.RecreateWnd(); });
  screen->Later([&] { dialog.SetModalResult(mrRetry); });
  EXPECT_EQ(dialog.ShowModal(), mrRetry) << "a new window goes on waiting";
  screen->Later([&] { dialog.Hide(); });
  EXPECT_EQ(dialog.ShowModal(), mrCancel);
  dialog.Show();
  EXPECT_THROW(dialog.ShowModal(), EInvalidOperation);
}

TEST_F(FormTest, MayBeDestroyedWhileItIsModal) {
  auto* dialog = new TPlainForm;
  screen->Later([&] { delete dialog; });
  EXPECT_EQ(dialog->ShowModal(), mrCancel);
  dialog = new TPlainForm;
  const TLifeGuard guard = dialog->GetLifeGuard();
  dialog->OnClose = [](TObject*, TCloseAction& action) { action = caFree; };
  screen->Later([&] { dialog->SetModalResult(mrOk); });
  EXPECT_EQ(dialog->ShowModal(), mrOk);
  screen.Drain();
  EXPECT_FALSE(guard.IsAlive());
}

// --- application -------------------------------------------------------------------------
TEST_F(FormTest, TheApplicationRunsUntilItsMainFormCloses) {
  auto& main = Application().CreateForm<TPlainForm>();
  auto& other = Application().CreateForm<TPlainForm>();
  EXPECT_EQ(Application().GetMainForm(), &main);
  int idle = 0;
  Application().OnIdle = [&](TObject*, bool& done) {
    done = ++idle < 3;
    if (idle == 2) other.Show();
    if (idle == 3) screen->Later([] { throw EInvalidOperation(u"In the loop"); });
    if (idle == 4) main.Close();
  };
  Application().Run();
  Application().OnIdle = nullptr;
  EXPECT_EQ(idle, 4);
  EXPECT_EQ(Screen().GetFormCount(), 0) << "its forms end with it";
  EXPECT_EQ(Application().GetMainForm(), nullptr);
  EXPECT_THAT(screen.Exceptions(), ElementsAre(u"In the loop"));
  screen.Exceptions().clear();
}

TEST_F(FormTest, TheLowerUnitsLearnOfTheApplication) {
  EXPECT_FALSE(Host().IsInteractive());
  TPlainForm form;
  auto* control = new TProbe(&form);
  EXPECT_EQ(Host().WindowOf(control), nullptr);
  form.Show();
  EXPECT_TRUE(Host().IsInteractive());
  EXPECT_EQ(Host().ApplicationWindow(), form.GetHandle());
  EXPECT_EQ(Host().WindowOf(control), control->GetHandle());
  {
    const TWaitCursor outer;
    const TWaitCursor inner;
    EXPECT_EQ(screen->GetCursorShape(), crHourGlass);
  }
  EXPECT_EQ(Screen().GetCursor(), crDefault);
}

TEST_F(FormTest, AsksInDialogs) {
  TPlainForm form;
  form.Show();
  Application().SetTitle(u"Title");
  screen->QueueDialogAnswer(mrNo);
  EXPECT_EQ(TaskMessageDlg(u"Head", u"Body", mtWarning, {mbYes, mbNo}), mrNo);
  const TMessageDialog shown = screen->GetDialogs().back().Dialog;
  EXPECT_EQ(shown.Instruction, u"Head");
  EXPECT_EQ(shown.Text, u"Body");
  EXPECT_EQ(shown.Owner, form.GetHandle());
  EXPECT_EQ(shown.DefaultButton, mrYes) << "mbOK is not there: the first one";

  struct TCase {
    std::uint32_t Flags;
    TMsgDlgButtons Buttons;
    TModalResult Default;
    TMsgDlgType Kind;
  };
  const TCase cases[] = {{0x00, {mbOK}, mrOk, mtCustom},
                         {0x31, {mbOK, mbCancel}, mrOk, mtWarning},
                         {0x124, {mbYes, mbNo}, mrNo, mtConfirmation},
                         {0x213, {mbYes, mbNo, mbCancel}, mrCancel, mtError},
                         {0x45, {mbRetry, mbCancel}, mrRetry, mtInformation}};
  for (const TCase& c : cases) {
    screen->QueueDialogAnswer(c.Default);
    EXPECT_EQ(Application().MessageBox(u"Text", {}, c.Flags), c.Default);
    const TMessageDialog dialog = screen->GetDialogs().back().Dialog;
    EXPECT_EQ(dialog.Title, u"Title");
    EXPECT_EQ(dialog.Buttons, c.Buttons.ToBits()) << c.Flags;
    EXPECT_EQ(dialog.DefaultButton, c.Default) << c.Flags;
    EXPECT_EQ(dialog.Kind, c.Kind) << c.Flags;
  }
  screen->QueueDialogAnswer(mrOk);
  Application().ShowException(std::make_exception_ptr(EInvalidOperation(u"Broken")));
  EXPECT_EQ(screen->GetDialogs().back().Dialog.Text, u"Broken");
  const std::size_t count = screen->GetDialogs().size();
  form.Hide();
  Application().ShowException(std::make_exception_ptr(EInvalidOperation(u"Unseen")));
  EXPECT_EQ(screen->GetDialogs().size(), count) << "without forms nobody is there to read it";
  Application().SetTitle({});
}

TEST_F(FormTest, StylesColourWhatIsDrawn) {
  TPlainForm form;
  auto* control = new TProbe(&form);
  form.Show();
  screen->Paint();
  const TColor before = ColorToRGB(clWindow);
  int told = 0;
  auto watch = TStyleManager::OnChange([&] { ++told; });
  const int painted = control->Painted;
  EXPECT_FALSE(TStyleManager::TrySetStyle(u"Nothing"));
  ASSERT_TRUE(TStyleManager::TrySetStyle(u"dark"));
  screen->Paint();
  EXPECT_GT(control->Painted, painted);
  EXPECT_EQ(told, 1);
  EXPECT_NE(ColorToRGB(clWindow), before);
  EXPECT_EQ(ColorToRGB(clWindow), TStyleManager::ActiveStyle().GetSystemColor(clWindow));
  EXPECT_EQ(TStyleManager::SystemStyle().GetSystemColor(clWindow), before);
  // Every colour of a style can be read on every other: no text disappears.
  for (const TColor text : {clWindowText, clBtnText, clGrayText, clMenuText})
    for (const TColor back : {clWindow, clBtnFace, clMenu})
      EXPECT_NE(ColorToRGB(text), ColorToRGB(back));
  watch.reset();
  ASSERT_TRUE(TStyleManager::TrySetStyle(u"System"));
  EXPECT_EQ(told, 1);
  EXPECT_EQ(ColorToRGB(clWindow), before);
}

// --- timers --------------------------------------------------------------------------------
TEST_F(FormTest, TimersTickOnlyForTheirPresentInterval) {
  TTimer timer;
  int ticks = 0;
  timer.OnTimer = [&](TObject*) { ++ticks; };
  timer.SetInterval(100);
  screen.Advance(250);
  EXPECT_EQ(ticks, 2);
  timer.SetInterval(60);  // begins anew
  screen.Advance(59);
  EXPECT_EQ(ticks, 2);
  screen.Advance(1);
  EXPECT_EQ(ticks, 3);
  screen.Advance(50);
  timer.Restart();
  screen.Advance(59);
  EXPECT_EQ(ticks, 3);
  timer.SetEnabled(false);
  screen.Advance(500);
  timer.SetInterval(0);
  timer.SetEnabled(true);
  screen.Advance(500);
  EXPECT_EQ(ticks, 3);

  // One that ends itself, and one that ends another that is due at the same moment.
  auto* own = new TTimer;
  bool ended = false;
  own->SetInterval(10);
  own->OnTimer = [&](TObject*) {
    delete own;
    ended = true;
  };
  screen.Advance(10);
  EXPECT_TRUE(ended);
  TTimer a, b;
  int fired = 0;
  a.OnTimer = [&](TObject*) { ++fired, b.SetEnabled(false); };
  b.OnTimer = [&](TObject*) { ++fired, a.SetEnabled(false); };
  a.SetInterval(10);
  b.SetInterval(10);
  screen.Advance(30);
  EXPECT_EQ(fired, 3) << "the first went on alone";
  a.OnTimer = [&](TObject*) {
    a.SetEnabled(false);
    throw EInvalidOperation(u"Tick");
  };
  screen.Advance(10);
  EXPECT_THAT(screen.Exceptions(), ElementsAre(u"Tick"));
  screen.Exceptions().clear();
}

}  // namespace
}  // namespace oak::tests

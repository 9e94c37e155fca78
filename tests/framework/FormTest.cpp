#include "tests/framework/ControlFixture.h"

#include <array>

#include "oak/base/Exceptions.h"
#include "oak/framework/StdCtrls.h"

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
  class TScaled : public TWatchedControl {
   public:
    using TWatchedControl::TWatchedControl;
    void ChangeScale(int m, int d) override {
      Seen.push_back({m, d, GetCurrentPPI()});
      TWatchedControl::ChangeScale(m, d);
    }
    std::vector<std::array<int, 3>> Seen;
  };
  auto* scaled = new TScaled(&form);
  const int width = form.GetWidth();
  screen->MoveToMonitor(form, 1);
  using TScale = std::array<int, 3>;
  EXPECT_THAT(scaled->Seen, ElementsAre(TScale{144, 96, 144}))
      << "the density is known before the sizes change";
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

}  // namespace
}  // namespace oak::tests

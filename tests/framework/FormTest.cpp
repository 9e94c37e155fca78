#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/StdCtrls.h"

namespace oak::tests {
namespace {

class FormTest : public TScreenTest {};

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
    auto* form = new TProbeForm;
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
  auto* form = new TProbeForm;
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

TEST_F(FormTest, ASplitterSizesItsNeighbour) {
  for (const TAlign align : {alLeft, alRight, alTop, alBottom}) {
    SCOPED_TRACE(align);
    TProbeForm form;
    form.SetFormBorderStyle(bsFormNone);
    auto* pane = new TPanel;
    auto* splitter = new TSplitter;
    auto* rest = new TPanel;
    pane->SetBounds(0, 0, 100, 100);
    for (TWinControl* control : std::initializer_list<TWinControl*>{pane, splitter, rest}) {
      control->SetParent(&form);
      control->SetAlign(control == rest ? alClient : align);
    }
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
    splitter->OnCanResize = [](TObject*, int& newSize, bool&) { newSize = newSize / 10 * 10; };
    screen->Drag(*splitter, {2, 2}, *splitter, by(-(size() - 87)));
    EXPECT_EQ(size(), 80);
    splitter->OnCanResize = [&](TObject*, int&, bool&) { delete std::exchange(pane, nullptr); };
    screen->Drag(*splitter, {2, 2}, *splitter, by(10));
    EXPECT_EQ(splitter->FindControl(), nullptr);
  }
}

TEST_F(FormTest, RunsModallyUntilItHasAResult) {
  TProbeForm owner, dialog;
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
  dialog.Show();
  EXPECT_THROW(dialog.ShowModal(), EInvalidOperation);
}

TEST_F(FormTest, MayBeDestroyedWhileItIsModal) {
  auto* dialog = new TProbeForm;
  screen->Later([&] { delete dialog; });
  EXPECT_EQ(dialog->ShowModal(), mrCancel);
  dialog = new TProbeForm;
  const TLifeGuard guard = dialog->GetLifeGuard();
  dialog->OnClose = [](TObject*, TCloseAction& action) { action = caFree; };
  screen->Later([&] { dialog->SetModalResult(mrOk); });
  EXPECT_EQ(dialog->ShowModal(), mrOk);
  screen.Drain();
  EXPECT_FALSE(guard.IsAlive());
}

}  // namespace
}  // namespace oak::tests

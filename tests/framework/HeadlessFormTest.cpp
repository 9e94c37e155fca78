#include "oak/framework/headless/HeadlessForm.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/Timer.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

class HeadlessForm : public THeadlessTest {};

TEST_F(HeadlessForm, AGuestHasTheDensityOfTheWindowThatItLivesIn) {
  screen->SetMonitors({{{0, 0, 1920, 1080}, {0, 0, 1920, 1040}, 96, true},
                       {{1920, 0, 5760, 2160}, {1920, 0, 5760, 2100}, 192, false}});
  TProbeForm host, other;
  host.Show();
  other.Show();
  screen->MoveToMonitor(host, 1);
  TPanel guest;
  guest.SetBounds(10, 10, 100, 50);
  TEdit edit;
  edit.SetParent(&guest);
  edit.SetBounds(5, 6, 40, 20);
  const auto expect = [&](int ppi) {
    SCOPED_TRACE(ppi);
    EXPECT_EQ(guest.GetCurrentPPI(), ppi);
    EXPECT_EQ(edit.GetFont().GetPixelsPerInch(), ppi);
    EXPECT_EQ(edit.GetBoundsRect().Size(), (TSize{MulDiv(40, ppi, 96), MulDiv(20, ppi, 96)}));
    EXPECT_EQ(guest.GetBoundsRect(), TRect(10, 10, 110, 60));  // its host places it
  };
  guest.SetParentWindow(host.GetHandle());
  expect(192);
  screen->MoveToMonitor(host, 0);
  expect(96);
  screen->SetPixelsPerInch(0, 144);
  expect(144);
  screen->MoveToMonitor(host, 1);
  guest.SetParentWindow(other.GetHandle());
  expect(144);
}

TEST_F(HeadlessForm, AModalFormThatNobodyAnswersIsAFault) {
  TProbeForm dialog(u"Dialog");
  EXPECT_THROW(dialog.ShowModal(), EInvalidOperation);
  EXPECT_EQ(screen->GetComplaints(),
            std::vector<TString>{u"The modal form \"Dialog\" waits for input that nobody gives."});
  screen->ClearComplaints();
  // A timer may end it: virtual time passes for that.
  dialog.Hide();
  TTimer timer;
  timer.SetInterval(60'000);
  timer.OnTimer = [&](TObject*) { dialog.SetModalResult(mrOk); };
  EXPECT_EQ(dialog.ShowModal(), mrOk);
}

// --- hints, cursors, foreign windows -----------------------------------------

TEST_F(HeadlessForm, TheCursorIsThatOfTheWindowUnderIt) {
  TProbe probe(form, {0, 0, 100, 100}, "p");
  probe.SetCursor(crSizeWE);
  TEdit edit;
  edit.SetParent(&form);
  edit.SetBounds(100, 0, 100, 23);
  form.Show();
  screen->MouseMove(probe.ClientToScreen({5, 5}));
  EXPECT_EQ(screen->GetCursorShape(), crSizeWE);
  screen->MouseMove(edit.ClientToScreen({5, 5}));
  EXPECT_EQ(screen->GetCursorShape(), crIBeam);
  Screen().SetCursor(crHourGlass);
  EXPECT_EQ(screen->GetCursorShape(), crHourGlass);
  Screen().SetCursor(crDefault);
}

TEST_F(HeadlessForm, AControlInAForeignWindowEndsItsWindowWithIt) {
  auto foreign = std::make_unique<THeadlessWindow>(screen.Desktop(), THeadlessKind::TopLevel,
                                                   nullptr, TRect{50, 50, 350, 250});
  foreign->SetVisible(true);
  TProbeForm owner;  // never shown; a plain place for the control's life
  TProbe probe(owner, {10, 10, 60, 60}, "p", &log);
  probe.SetParent(nullptr);
  probe.SetParentWindow(foreign->GetHandle());
  probe.HandleNeeded();
  screen.Drain();
  EXPECT_EQ(probe.ClientToScreen({0, 0}), TPoint(60, 60));
  screen->Click({65, 65});
  EXPECT_EQ(std::count(log.begin(), log.end(), "p click"), 1);
  EXPECT_TRUE(probe.Focused());
  foreign.reset();
  EXPECT_FALSE(probe.HandleAllocated());
}

}  // namespace
}  // namespace oak::tests

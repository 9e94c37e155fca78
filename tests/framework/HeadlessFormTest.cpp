#include "oak/framework/headless/HeadlessForm.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/Timer.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

using testkit::THeadlessScreen;

// --- forms -------------------------------------------------------------------

TEST(HeadlessForm, FramesTakeTheirShareAndStatesKeepTheBounds) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  form.Show();
  EXPECT_EQ(form.GetClientRect(), TRect(0, 0, 384, 261));
  EXPECT_EQ(form.ClientToScreen({0, 0}), TPoint(108, 131));
  screen->SetWindowState(form, wsMaximized);
  EXPECT_EQ(form.GetBoundsRect(), TRect(0, 0, 1920, 1040));
  EXPECT_EQ(form.GetWindowState(), wsMaximized);
  screen->SetWindowState(form, wsMinimized);
  EXPECT_FALSE(form.IsActive());
  EXPECT_EQ(screen->WindowAt({200, 200}), nullptr);
  screen->SetWindowState(form, wsNormal);
  EXPECT_EQ(form.GetBoundsRect(), TRect(100, 100, 500, 400));
  EXPECT_TRUE(form.IsActive());
  screen->ResizeWindow(form, 300, 200);
  EXPECT_EQ(form.GetClientRect(), TRect(0, 0, 284, 161));
  screen->CloseWindow(form);
  EXPECT_FALSE(form.GetVisible());
}

TEST(HeadlessForm, AFormFollowsTheDensityOfItsMonitor) {
  THeadlessScreen screen(FailWith);
  screen->SetMonitors({{{0, 0, 1920, 1080}, {0, 0, 1920, 1040}, 96, true},
                       {{1920, 0, 5760, 2160}, {1920, 0, 5760, 2100}, 192, false}});
  TProbeForm form;
  TProbe probe(form, {10, 20, 110, 120}, "p");
  form.Show();
  screen->MoveToMonitor(form, 1);
  EXPECT_EQ(form.GetPixelsPerInch(), 192);
  EXPECT_EQ(form.GetBoundsRect(), TRect(1920, 0, 1920 + 800, 600));
  EXPECT_EQ(probe.GetBoundsRect(), TRect(20, 40, 220, 240));
  EXPECT_EQ(screen->GetSystemMetric(4, 192), 46);
  EXPECT_EQ(form.GetClientRect(), TRect(0, 0, 800 - 32, 600 - 46 - 32));
  screen->SetPixelsPerInch(1, 144);
  EXPECT_EQ(form.GetBoundsRect().Size(), (TSize{600, 450}));
  EXPECT_EQ(probe.GetBoundsRect(), TRect(15, 30, 165, 180));
  screen->MoveToMonitor(form, 0);
  EXPECT_EQ(form.GetBoundsRect(), TRect(0, 0, 400, 300));
  EXPECT_EQ(probe.GetBoundsRect(), TRect(10, 20, 110, 120));
}

TEST(HeadlessForm, AGuestHasTheDensityOfTheWindowThatItLivesIn) {
  THeadlessScreen screen(FailWith);
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

TEST(HeadlessForm, AModalFormKeepsTheUserFromTheOthers) {
  THeadlessScreen screen(FailWith);
  TProbeForm main(u"Main"), dialog(u"Dialog");
  dialog.SetBounds(600, 100, 200, 200);
  TLog log;
  TProbe behind(main, {0, 0, 100, 100}, "behind", &log);
  TButton ok;
  ok.SetModalResult(mrOk);
  ok.SetParent(&dialog);
  main.Show();
  screen.Drain();
  Take(log);
  screen->Later([&] {
    screen->Click(main.ClientToScreen({5, 5}));
    screen->CloseWindow(main);
    EXPECT_TRUE(dialog.IsActive());
    screen->Click(ok, {3, 3});
  });
  EXPECT_EQ(dialog.ShowModal(), mrOk);
  EXPECT_EQ(std::count(log.begin(), log.end(), "behind click"), 0);
  EXPECT_TRUE(main.GetVisible());
  EXPECT_TRUE(main.IsActive());
  screen->Click(behind, {5, 5});
  EXPECT_EQ(std::count(log.begin(), log.end(), "behind click"), 1);

  screen->Later([&] { screen->CloseWindow(dialog); });
  EXPECT_EQ(dialog.ShowModal(), mrCancel);
}

TEST(HeadlessForm, AModalFormThatNobodyAnswersIsAFault) {
  THeadlessScreen screen(FailWith);
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

TEST(HeadlessForm, AHandlersExceptionIsReportedAndTheLoopGoesOn) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TProbe probe(form, {0, 0, 100, 100}, "p");
  probe.OnLine = [](const std::string& line) {
    if (line == "click") throw EInvalidOperation(u"thrown");
  };
  form.Show();
  screen->Click(probe, {1, 1});
  screen->Later([] { throw EInvalidOperation(u"in an action"); });
  screen.Drain();
  EXPECT_EQ(screen.Exceptions(), (std::vector<TString>{u"thrown", u"in an action"}));
  screen.Exceptions().clear();
}

// --- hints, cursors, foreign windows -----------------------------------------

TEST(HeadlessForm, AHintComesAfterAPauseAndGoesWithThePointer) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TProbe probe(form, {0, 0, 100, 100}, "p");
  probe.SetHint(u"Short|Long");
  probe.SetShowHint(true);
  form.Show();
  screen->MouseMove(probe.ClientToScreen({5, 5}));
  screen.Advance(499);
  EXPECT_EQ(screen->GetHintText(), u"");
  screen.Advance(1);
  EXPECT_EQ(screen->GetHintText(), u"Short");
  screen->MouseMove(probe.ClientToScreen({50, 50}));  // within what it belongs to
  EXPECT_EQ(screen->GetHintText(), u"Short");
  screen->MouseMove(form.ClientToScreen({200, 200}));
  EXPECT_EQ(screen->GetHintText(), u"");
  screen->MouseMove(probe.ClientToScreen({5, 5}));
  screen.Advance(500);
  screen.Advance(2500);
  EXPECT_EQ(screen->GetHintText(), u"");
}

TEST(HeadlessForm, TheCursorIsThatOfTheWindowUnderIt) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
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

TEST(HeadlessForm, AControlInAForeignWindowEndsItsWindowWithIt) {
  THeadlessScreen screen(FailWith);
  TLog log;
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

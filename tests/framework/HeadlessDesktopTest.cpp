#include "oak/framework/headless/HeadlessDesktop.h"

#include <thread>

#include "oak/base/Exceptions.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Timer.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

using testkit::THeadlessScreen;

std::uint16_t KeyA() { return u'A'; }

// --- mouse -------------------------------------------------------------------

TEST(HeadlessDesktop, MouseReachesTheTopmostWindowAndTheCapture) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe low(form, {0, 0, 100, 100}, "low", &log), high(form, {50, 50, 150, 150}, "high", &log);
  form.Show();
  screen.Drain();
  Take(log);
  screen->MouseMove(form.ClientToScreen({60, 60}));
  screen->MouseMove(form.ClientToScreen({40, 40}));
  EXPECT_EQ(Take(log), (TLog{"high move 10,10", "high leave", "low move 40,40"}));

  // A press on `low` keeps the mouse there until it is let go, and is no click elsewhere.
  screen->MouseDown();
  screen->MouseMove(form.ClientToScreen({80, 80}));
  screen->MouseMove(form.ClientToScreen({-5, -200}));
  screen->MouseUp();
  EXPECT_EQ(Take(log), (TLog{"low down 40,40 left", "low move 80,80", "low move -5,-200",
                             "low up -5,-200 left"}));

  low.BringToFront();
  screen->Click(form.ClientToScreen({60, 60}), {ssCtrl});
  EXPECT_EQ(Take(log), (TLog{"low key 17 ctrl", "low move 60,60", "low down 60,60 left ctrl",
                             "low click", "low up 60,60 left ctrl", "low keyup 17"}));
}

TEST(HeadlessDesktop, ADoubleClickIsOneByItsNameOnly) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe probe(form, {0, 0, 100, 100}, "p", &log);
  form.Show();
  screen->Click(probe, {1, 1});
  screen->Click(probe, {1, 1});
  EXPECT_EQ(std::count(log.begin(), log.end(), "p double"), 0);
  EXPECT_EQ(std::count(log.begin(), log.end(), "p click"), 2);
  screen->DoubleClick(probe, {1, 1});
  EXPECT_EQ(std::count(log.begin(), log.end(), "p double"), 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), "p click"), 3);
}

TEST(HeadlessDesktop, DisabledWindowsLeaveTheMouseToWhatTheyLieIn) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe outer(form, {0, 0, 100, 100}, "outer", &log);
  TProbe inner(outer, {10, 10, 50, 50}, "inner", &log);
  form.Show();
  inner.SetEnabled(false);
  screen->Click(form.ClientToScreen({20, 20}));
  EXPECT_EQ(std::count(log.begin(), log.end(), "outer click"), 1);
  form.SetEnabled(false);
  Take(log);
  screen->Click(form.ClientToScreen({20, 20}));
  EXPECT_EQ(Take(log), TLog{});
}

TEST(HeadlessDesktop, RightButtonAndKeysAskForTheContextMenu) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe probe(form, {10, 10, 100, 100}, "p", &log);
  form.Show();
  screen->RightClick(probe, {2, 3});
  const TPoint at = probe.ClientToScreen({2, 3});
  EXPECT_EQ(log.back(), "p menu " + std::to_string(at.X) + "," + std::to_string(at.Y));
  screen->KeyPress(vkApps);
  EXPECT_EQ(log[log.size() - 2], "p menu -1,-1");
  Take(log);
  screen->KeyPress(vkF10, {ssShift});
  EXPECT_EQ(std::count(log.begin(), log.end(), "p menu -1,-1"), 1);
}

TEST(HeadlessDesktop, TheWheelGoesToThePointerAndUpwardsUntilItIsUsed) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe outer(form, {0, 0, 100, 100}, "outer", &log);
  TProbe inner(outer, {10, 10, 50, 50}, "inner", &log);
  form.Show();
  screen->MouseMove(inner.ClientToScreen({1, 1}));
  Take(log);
  inner.UsesWheel = true;
  screen->Wheel(-2);
  EXPECT_EQ(Take(log), TLog{"inner wheel -240"});
  inner.UsesWheel = false;
  outer.UsesWheel = true;
  screen->Wheel(1);
  EXPECT_EQ(Take(log), (TLog{"inner wheel 120", "outer wheel 120"}));
  outer.UsesWheel = false;
  screen->Wheel(1);
  EXPECT_EQ(Take(log), (TLog{"inner wheel 120", "outer wheel 120"}));
}

// --- focus and keys ----------------------------------------------------------

TEST(HeadlessDesktop, KeysGiveCharactersUnlessTheyAreTaken) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe probe(form, {0, 0, 100, 100}, "p", &log);
  form.Show();
  Take(log);
  screen->TypeText(u"aZ?\u00E9");
  EXPECT_EQ(Take(log),
            (TLog{"p key 65", "p char a", "p keyup 65", "p key 16 shift", "p key 90 shift",
                  "p char Z", "p keyup 90", "p keyup 16", "p key 16 shift", "p key 191 shift",
                  "p char ?", "p keyup 191", "p keyup 16", "p char \u00E9"}));
  probe.OnKeyDown = nullptr;
  form.SetKeyPreview(true);
  form.OnKeyDown = [](TObject*, std::uint16_t& key, TShiftState) { key = 0; };
  screen->KeyPress(KeyA());
  EXPECT_EQ(Take(log), TLog{"p keyup 65"});
  EXPECT_FALSE(screen->IsKeyDown(KeyA()));
}

TEST(HeadlessDesktop, FocusFollowsTabsFormsAndTheEndOfControls) {
  THeadlessScreen screen(FailWith);
  TLog log;
  TProbeForm first(u"First"), second(u"Second");
  second.SetBounds(500, 100, 200, 200);
  TProbe a(first, {0, 0, 50, 50}, "a", &log);
  auto b = std::make_unique<TProbe>(first, TRect{50, 0, 100, 50}, "b", &log);
  TProbe c(second, {0, 0, 50, 50}, "c", &log);
  first.Show();
  screen->KeyPress(vkTab);
  EXPECT_TRUE(b->Focused());
  second.Show();
  EXPECT_TRUE(c.Focused());
  EXPECT_FALSE(first.IsActive());
  EXPECT_EQ(screen->GetTopWindows().back(), screen->GetActiveWindow());
  screen->ActivateWindow(first);
  EXPECT_TRUE(b->Focused());
  b.reset();
  screen.Drain();
  EXPECT_TRUE(a.Focused());
  first.Hide();
  EXPECT_TRUE(c.Focused());
  second.Hide();
  EXPECT_EQ(screen->GetActiveWindow(), nullptr);
  EXPECT_EQ(screen->GetFocusedWindow(), nullptr);
}

TEST(HeadlessDesktop, ADestroyedActiveFormLeavesTheKeysToTheNext) {
  THeadlessScreen screen(FailWith);
  TLog log;
  TProbeForm stays(u"Stays");
  TProbe probe(stays, {0, 0, 50, 50}, "p", &log);
  stays.Show();
  auto goes = std::make_unique<TProbeForm>(u"Goes");
  goes->Show();
  EXPECT_TRUE(goes->IsActive());
  goes.reset();
  screen.Drain();
  EXPECT_TRUE(stays.IsActive());
  EXPECT_TRUE(probe.Focused());
}

// --- messages, timers, order -------------------------------------------------

TEST(HeadlessDesktop, MessagesComeBeforeInputAndPaintsComeLast) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe probe(form, {0, 0, 100, 100}, "p", &log);
  form.Show();
  screen.Drain();
  screen->SetAutoRun(false);
  const int paints = probe.Paints;
  probe.Invalidate();
  screen->KeyDown(KeyA());
  TMainThreadQueue::Instance().Post([&] { log.push_back("queued"); });
  TTimer timer;
  timer.SetInterval(10);
  timer.OnTimer = [&](TObject*) {
    log.push_back("timer");
    timer.SetEnabled(false);
  };
  screen.Clock().Advance(10);
  probe.PostMessage(FirstPrivateMessage, 1);
  probe.OnProc = [&](TMessage& message) {
    if (message.WParam == 1) probe.PostMessage(FirstPrivateMessage, 2);
  };
  Take(log);
  while (screen->ProcessMessage()) EXPECT_LE(probe.Paints, paints + 1);
  const std::string number = std::to_string(FirstPrivateMessage);
  EXPECT_EQ(Take(log), (TLog{"p message " + number + " 1", "p message " + number + " 2", "queued",
                             "p key 65", "p char a", "timer"}));
  EXPECT_EQ(probe.Paints, paints + 1);
}

TEST(HeadlessDesktop, WhatWasQueuedForAWindowEndsWithIt) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  auto probe = std::make_unique<TProbe>(form, TRect{0, 0, 100, 100}, "p", &log);
  form.Show();
  screen.Drain();
  const HWND handle = probe->GetHandle();
  probe->PostMessage(FirstPrivateMessage);
  probe.reset();
  Take(log);
  EXPECT_FALSE(screen->IsWindow(handle));
  screen.Drain();
  EXPECT_EQ(Take(log), TLog{});
}

TEST(HeadlessDesktop, TimersTickInTheOrderOfTheirTimeAndCatchUpOnce) {
  THeadlessScreen screen(FailWith);
  TLog log;
  auto fast = screen->CreateTimer(30, [&] { log.push_back("fast"); });
  auto slow = screen->CreateTimer(70, [&] { log.push_back("slow"); });
  screen.Advance(140);
  EXPECT_EQ(Take(log), (TLog{"fast", "fast", "slow", "fast", "fast", "slow"}));
  screen.Clock().Advance(1000);  // as if the program had been busy
  screen.Drain();
  EXPECT_EQ(Take(log), (TLog{"fast", "slow"}));
  slow = screen->CreateTimer(1, [&] {
    log.push_back("last");
    slow.reset();  // in its own tick
  });
  fast.reset();
  screen.Advance(100);
  EXPECT_EQ(Take(log), TLog{"last"});
}

TEST(HeadlessDesktop, AnotherThreadWakesAWaitingLoop) {
  THeadlessScreen screen(FailWith, false);
  std::atomic<bool> woken{false};
  bool ran = false;
  std::thread thread([&] {
    TMainThreadQueue::Instance().Post([&] { ran = true; });
    woken = true;
    screen->WakeUp();
  });
  while (!ran) {
    screen->WaitMessage();
    screen->ProcessMessage();
  }
  thread.join();
  EXPECT_TRUE(woken);
}

TEST(HeadlessDesktop, AnyThreadPostsToAWindow) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TLog log;
  TProbe probe(form, {0, 0, 100, 100}, "p", &log);
  form.Show();
  screen.Drain();
  Take(log);
  const HWND handle = probe.GetHandle();
  std::thread([handle] { EXPECT_TRUE(PostToWindow(handle, 2011, 5, 0)); }).join();
  screen.Drain();
  EXPECT_EQ(Take(log), TLog{"p message 2011 5"});
}

TEST(HeadlessDesktop, WaitingUnderAVirtualClockWithNothingToWaitForReturns) {
  THeadlessScreen screen(FailWith);
  screen->WaitMessage();
  const auto timer = screen->CreateTimer(50, [] {});
  screen->WaitMessage();  // nobody advances the clock meanwhile
  EXPECT_FALSE(screen->ProcessMessage());
}

// --- painting ----------------------------------------------------------------

TEST(HeadlessDesktop, OnlyInvalidPartsOfShownWindowsArePainted) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TProbe probe(form, {0, 0, 100, 100}, "p"), hidden(form, {100, 0, 200, 100}, "h");
  hidden.SetVisible(false);
  probe.SetCaption(u"abc");
  form.Show();
  screen.Drain();
  EXPECT_EQ(probe.Paints, 1);
  EXPECT_EQ(hidden.Paints, 0);
  probe.InvalidateRect({10, 10, 20, 20});
  probe.InvalidateRect({30, 40, 35, 45});
  probe.InvalidateRect({200, 0, 300, 10});
  EXPECT_EQ(probe.Paints, 1);
  screen.Drain();
  EXPECT_EQ(probe.Paints, 2);
  EXPECT_EQ(probe.LastClip, TRect(10, 10, 35, 45));
  const THeadlessWindow& window = *screen->WindowOf(probe);
  EXPECT_EQ(window.GetPaintCount(), 2);
  // What lies outside of the part is kept from the paint before.
  const auto& drawing = window.GetDrawing();
  EXPECT_TRUE(std::any_of(drawing.begin(), drawing.end(), [](const TDrawOperation& operation) {
    return operation.Kind == TDrawKind::Text && operation.Text == u"abc";
  }));
  probe.Invalidate();
  probe.Update();
  EXPECT_EQ(probe.Paints, 3);
  hidden.SetVisible(true);
  screen.Drain();
  EXPECT_EQ(hidden.Paints, 1);
  EXPECT_EQ(probe.Paints, 3);
}

TEST(HeadlessDesktop, PartialPaintsDoNotPileUp) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TProbe probe(form, {0, 0, 300, 200}, "p");
  form.Show();
  for (int i = 0; i < 3'000; ++i) {
    probe.InvalidateRect({i % 97, i % 53, i % 97 + 60, i % 53 + 40});
    screen->Paint();
  }
  EXPECT_LT(screen->WindowOf(probe)->GetDrawing().size(), 600u);
}

// --- windows that end in their own handlers ----------------------------------

TEST(HeadlessDesktop, AControlMayEndInAnyOfItsHandlers) {
  const char* const lines[] = {"move 5,5", "down 5,5 left", "enter",    "click",    "up 5,5 left",
                               "double",   "key 65",        "char a",   "keyup 65", "wheel 120",
                               "leave",    "menu ",         "message ", "exit"};
  for (const char* line : lines) {
    SCOPED_TRACE(line);
    THeadlessScreen screen(FailWith);
    TProbeForm form;
    TProbe other(form, {200, 0, 250, 50}, "other");
    auto probe = std::make_unique<TProbe>(form, TRect{0, 0, 100, 100}, "p");
    bool met = false;
    probe->OnLine = [&](const std::string& found) {
      if (met || !found.starts_with(line)) return;
      met = true;
      probe.reset();
    };
    form.Show();
    const TPoint at = form.ClientToScreen({5, 5});
    screen->SetAutoRun(false);
    screen->Click(at);
    screen->DoubleClick(at);
    screen->KeyPress(KeyA());
    screen->MouseMove(at);
    screen->Wheel(1);
    screen->RightClick(at);
    screen->Later([&] {
      if (probe) probe->PostMessage(FirstPrivateMessage);
    });
    screen->KeyPress(vkTab);
    screen->MouseMove(form.ClientToScreen({220, 20}));
    screen.Drain();
    EXPECT_TRUE(met);
    EXPECT_EQ(probe, nullptr);
  }
}

TEST(HeadlessDesktop, AFormMayEndInTheHandlersOfItsControls) {
  for (const char* line : {"down 5,5 left", "click", "key 65", "enter", "menu ", "wheel 120"}) {
    SCOPED_TRACE(line);
    THeadlessScreen screen(FailWith);
    auto form = std::make_unique<TProbeForm>();
    auto* const probe = new TProbe(*form, TRect{0, 0, 100, 100}, "p");  // the form's
    probe->OnLine = [&](const std::string& found) {
      if (found.starts_with(line)) form.reset();
    };
    form->Show();
    if (form) {
      const TPoint at = form->ClientToScreen({5, 5});
      screen->Click(at);
      screen->KeyPress(KeyA());
      screen->Wheel(1);
      screen->RightClick(at);
    }
    EXPECT_EQ(form, nullptr);
    EXPECT_EQ(screen->GetWindowCount(), 0u);
  }
}

TEST(HeadlessDesktop, AWindowMadeAnewInItsHandlersKeepsWorking) {
  for (const char* line : {"move 5,5", "down 5,5 left", "click", "key 65", "char a", "wheel 120"}) {
    SCOPED_TRACE(line);
    THeadlessScreen screen(FailWith);
    TProbeForm form;
    TLog log;
    TProbe probe(form, {0, 0, 100, 100}, "p", &log);
    int made = 0;
    probe.OnLine = [&](const std::string& found) {
      if (made > 0 || !found.starts_with(line)) return;
      ++made;
      probe.RecreateWnd();
    };
    form.Show();
    const TPoint at = form.ClientToScreen({5, 5});
    for (int round = 0; round < 2; ++round) {
      screen->Click(at);
      probe.SetFocus();
      screen->KeyPress(KeyA());
      screen->Wheel(1);
    }
    EXPECT_EQ(made, 1);
    EXPECT_GE(std::count(log.begin(), log.end(), "p click"), 1);
    EXPECT_TRUE(probe.Focused());
  }
}

// --- scroll bars -------------------------------------------------------------

/// A window with a range of its own.
class TScrolled final : public THeadlessWindow {
 public:
  explicit TScrolled(THeadlessDesktop& desktop)
      : THeadlessWindow(desktop, THeadlessKind::TopLevel, nullptr, {0, 0, 117, 134}) {
    SetScrollInfo(sbVertical, {0, 10, 110, 2});
    SetVisible(true);
  }
  void Range(int range) { SetScrollInfo(sbVertical, {GetPosition(), 10, range, 2}); }
  int GetPosition() const { return GetScrollInfo(sbVertical).Position; }
};

TEST(HeadlessDesktop, AScrollBarMovesByArrowsPagesThumbAndWheel) {
  THeadlessScreen screen(FailWith);
  TScrolled window(screen.Desktop());
  EXPECT_EQ(window.GetClientRect(), TRect(0, 0, 100, 134));
  const auto click = [&](int y) {
    screen->Click({108, y});
    return window.GetPosition();
  };
  EXPECT_EQ(click(130), 2);
  EXPECT_EQ(click(100), 12);
  EXPECT_EQ(click(5), 10);
  EXPECT_EQ(click(18), 0);
  screen->Drag({108, 20}, {108, 500});
  EXPECT_EQ(window.GetPosition(), 100);
  EXPECT_EQ(screen->GetCaptureWindow(), nullptr);
  screen->MouseMove({20, 20});
  screen->Wheel(2);
  EXPECT_EQ(window.GetPosition(), 88);
  window.Range(20);
  EXPECT_EQ(window.GetPosition(), 10);
  window.Range(10);
  EXPECT_EQ(window.GetClientRect().Width(), 117);
  EXPECT_FALSE(window.GetScroll(sbVertical, nullptr, nullptr, nullptr));
}

}  // namespace
}  // namespace oak::tests

#include "oak/framework/headless/HeadlessDesktop.h"

#include <thread>

#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Timer.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

class HeadlessDesktop : public THeadlessTest {};

using testkit::THeadlessScreen;

std::uint16_t KeyA() { return u'A'; }

// --- focus and keys ----------------------------------------------------------

TEST_F(HeadlessDesktop, KeysGiveCharactersUnlessTheyAreTaken) {
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

// --- messages, timers, order -------------------------------------------------

TEST_F(HeadlessDesktop, MessagesComeBeforeInputAndPaintsComeLast) {
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

TEST_F(HeadlessDesktop, TimersTickInTheOrderOfTheirTimeAndCatchUpOnce) {
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

TEST(HeadlessDesktopThreads, AnotherThreadWakesAWaitingLoop) {
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

TEST_F(HeadlessDesktop, AnyThreadPostsToAWindow) {
  TProbe probe(form, {0, 0, 100, 100}, "p", &log);
  form.Show();
  screen.Drain();
  Take(log);
  const HWND handle = probe.GetHandle();
  std::thread([handle] { EXPECT_TRUE(PostToWindow(handle, 2011, 5, 0)); }).join();
  screen.Drain();
  EXPECT_EQ(Take(log), TLog{"p message 2011 5"});
}

TEST_F(HeadlessDesktop, WaitingUnderAVirtualClockWithNothingToWaitForReturns) {
  screen->WaitMessage();
  const auto timer = screen->CreateTimer(50, [] {});
  screen->WaitMessage();  // nobody advances the clock meanwhile
  EXPECT_FALSE(screen->ProcessMessage());
}

// --- painting ----------------------------------------------------------------

TEST_F(HeadlessDesktop, OnlyInvalidPartsOfShownWindowsArePainted) {
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

TEST_F(HeadlessDesktop, PartialPaintsDoNotPileUp) {
  TProbe probe(form, {0, 0, 300, 200}, "p");
  form.Show();
  for (int i = 0; i < 3'000; ++i) {
    probe.InvalidateRect({i % 97, i % 53, i % 97 + 60, i % 53 + 40});
    screen->Paint();
  }
  EXPECT_LT(screen->WindowOf(probe)->GetDrawing().size(), 600u);
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

TEST_F(HeadlessDesktop, AScrollBarMovesByArrowsPagesThumbAndWheel) {
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

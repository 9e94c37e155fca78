#include "testkit/HeadlessForms.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "oak/framework/MainThreadQueue.h"
#include "oak/platform/MenuTable.h"

namespace oak::testkit {
namespace {

void Abort(const std::string& text) {
  std::fprintf(stderr, "headless screen: %s\n", text.c_str());
  std::abort();
}

TString Counted(std::size_t count, TStringView what) {
  return FromUtf8(std::to_string(count)) + u" " + TString(what);
}

}  // namespace

THeadlessScreen::THeadlessScreen(TFailure onFailure, bool virtualClock)
    : fOnFailure(onFailure ? std::move(onFailure) : Abort),
      fFormerMenus(TMenuTable::Instance().GetMenuCount()) {
  if (virtualClock) fClock.emplace();
  auto desktop = std::make_unique<THeadlessDesktop>();
  fDesktop = desktop.get();
  fDesktop->SetUnattended(true);
  if (virtualClock)
    fDesktop->OnWait = [this] {
      std::uint64_t due = 0;
      const bool timed = fDesktop->GetNextTimer(&due);
      if (timed && due > fClock->GetTicks()) fClock->Advance(due - fClock->GetTicks());
      return timed;
    };
  fFormer = SetWidgetSet(std::move(desktop));
  fFormerOnException = std::exchange(
      Application().OnException,
      [this](TObject*, const auto& error) { fExceptions.push_back(ExceptionText(error)); });
}

THeadlessScreen::~THeadlessScreen() {
  try {
    Drain();  // forms that were released end now
  } catch (...) {
    fExceptions.push_back(ExceptionText(std::current_exception()));
  }
  for (const TString& fault : GetFaults()) fOnFailure(ToUtf8(fault));
  Application().OnException = std::move(fFormerOnException);
  SetWidgetSet(std::move(fFormer));
}

void THeadlessScreen::Advance(std::uint64_t milliseconds) {
  TVirtualClock& clock = Clock();
  const std::uint64_t end = clock.GetTicks() + milliseconds;
  Drain();
  while (clock.GetTicks() < end) {
    std::uint64_t due = end;
    fDesktop->GetNextTimer(&due);
    clock.Advance(std::clamp(due, clock.GetTicks() + 1, end) - clock.GetTicks());
    Drain();
  }
}

std::vector<TString> THeadlessScreen::GetFaults() const {
  std::vector<TString> faults = fDesktop->GetComplaints();
  for (const TString& text : fExceptions)
    faults.push_back(u"An exception was not handled: " + text);
  const auto count = [&](std::size_t number, TStringView what) {
    if (number > 0) faults.push_back(Counted(number, what));
  };
  count(fDesktop->GetUnusedAnswers(), u"answers that nobody asked for");
  count(fDesktop->GetWindowCount(), u"windows that were not destroyed");
  count(fDesktop->GetTimerCount(), u"timers that still run");
  count(fDesktop->GetPendingCount(), u"messages that wait");
  count(TMainThreadQueue::Instance().GetPending(), u"queued procedures that wait");
  const std::size_t menus = TMenuTable::Instance().GetMenuCount();
  count(menus > fFormerMenus ? menus - fFormerMenus : 0, u"menus that were not destroyed");
  return faults;
}

}  // namespace oak::testkit

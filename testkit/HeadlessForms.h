// Forms under test: a desktop without a screen that a test works like a user.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "oak/framework/Application.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessPicture.h"
#include "testkit/VirtualClock.h"

namespace oak::testkit {

/// Installs a headless desktop for the span of a block and looks at its end whether all was put in
/// order. Forms are made after it and destroyed before it. Main thread.
///
///   THeadlessScreen screen([](const std::string& text) { ADD_FAILURE() << text; });
///   TMyForm form;
///   form.Show();
///   screen->Click(form.SearchButton, {5, 5});        // all that follows has happened now
///   screen.Advance(300);                             // timers of this time have ticked
///   EXPECT_EQ(screen.Picture(form), u"...");
///
/// What the form asks the user is answered beforehand:
///
///   screen->QueueDialogAnswer(mrYes);
///   screen->QueueMenuChoice(u"View|Details");
///   screen->Later([&] { screen->KeyPress(vkReturn); });
///   form.ShowModal();
///
/// The desktop is unattended: a dialog that nobody answers, and a menu, a drag or a modal form that
/// would wait for ever, are ended and count as failures.
class THeadlessScreen {
 public:
  using TFailure = std::function<void(const std::string& text)>;

  /// `onFailure` is told at the end what is wrong; without it the text goes to the error output and
  /// the process is aborted. With a virtual clock time passes by Advance, and in loops that wait
  /// for a timer and nothing else.
  explicit THeadlessScreen(TFailure onFailure = nullptr, bool virtualClock = true);
  ~THeadlessScreen();
  THeadlessScreen(const THeadlessScreen&) = delete;
  THeadlessScreen& operator=(const THeadlessScreen&) = delete;

  THeadlessDesktop& Desktop() noexcept { return *fDesktop; }
  THeadlessDesktop* operator->() noexcept { return fDesktop; }
  /// Not with the clock of the system.
  TVirtualClock& Clock() { return fClock.value(); }

  /// Processes all that waits.
  void Drain() { fDesktop->Run(); }
  /// Lets virtual time pass: stops at each moment at which a timer is due and processes all that
  /// waits then.
  void Advance(std::uint64_t milliseconds);
  /// The form as text; see TextPicture.
  TString Picture(const TCustomForm& form) const { return TextPicture(form); }

  /// Texts of the exceptions that handlers threw, in their order. A test that expects one takes it
  /// away.
  std::vector<TString>& Exceptions() noexcept { return fExceptions; }
  /// What is wrong at this moment: exceptions, complaints of the desktop, answers that nobody asked
  /// for, windows, timers, menus and messages that are left.
  std::vector<TString> GetFaults() const;

 private:
  TFailure fOnFailure;
  std::optional<TVirtualClock> fClock;
  THeadlessDesktop* fDesktop;
  std::unique_ptr<TWidgetSet> fFormer;
  TApplication::TExceptionEvent fFormerOnException;
  std::vector<TString> fExceptions;
  std::size_t fFormerMenus;
};

}  // namespace oak::testkit

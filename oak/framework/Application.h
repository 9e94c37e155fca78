// The application as the library sees it.
#pragma once

#include <atomic>
#include <exception>
#include <functional>

#include <memory>
#include <utility>

#include "oak/framework/Component.h"

namespace oak {

class TCustomForm;
class TWinControl;
struct TMessage;

/// What concerns the process as a whole. Main thread but where another is named.
class TApplication : public TObject {
 public:
  using TExceptionEvent = std::function<void(TObject* Sender, const std::exception_ptr& E)>;

  /// Reports the exception that is being handled; to be called within a catch block.
  /// On the main thread: OnException if assigned, else its text goes to the debugger.
  /// On other threads the report is queued to the main thread, without sender since
  /// that may be gone by then. Never throws.
  void HandleException(TObject* sender) noexcept;
  /// As above, with an exception that was caught before.
  void HandleException(TObject* sender, std::exception_ptr exception) noexcept;

  /// Whether the code runs in a shared library that is loaded into foreign programs.
  /// Default False. Any thread.
  bool GetIsLibrary() const noexcept { return fIsLibrary; }
  void SetIsLibrary(bool value) noexcept { fIsLibrary = value; }

  /// An exception that nobody has handled. Main thread. To be set before other
  /// threads run.
  TExceptionEvent OnException;
  /// Tells the user of an exception: a dialog while forms are on the screen, else the debugger.
  void ShowException(const std::exception_ptr& exception);

  // --- the message loop ------------------------------------------------------------------------
  // None of it is needed in a program with a loop of its own.

  /// Shows the main form and runs messages until Terminate; then destroys the forms that CreateForm
  /// made. What handlers throw is reported, and the loop goes on.
  void Run();
  /// Ends Run, and all modal forms, when the present handler has returned. Any thread.
  void Terminate() noexcept;
  bool GetTerminated() const noexcept { return fTerminated; }
  /// Runs the messages that wait, and what threads have queued.
  void ProcessMessages();
  /// Runs one message; if none waits, OnIdle, and waits for the next.
  void HandleMessage();

  /// Makes a form that the application owns. The first one becomes the main form.
  template <class TFormClass, class... TArguments>
  TFormClass& CreateForm(TArguments&&... arguments) {
    auto form = std::make_unique<TFormClass>(std::forward<TArguments>(arguments)...);
    TFormClass& result = *form;
    Adopt(std::move(form));
    return result;
  }
  TCustomForm* GetMainForm() const noexcept { return fMainForm; }
  /// The form whose closing or end ends Run; nil for none.
  void SetMainForm(TCustomForm* value) noexcept { fMainForm = value; }
  /// Whether Run shows the main form; default true.
  bool GetShowMainForm() const noexcept { return fShowMainForm; }
  void SetShowMainForm(bool value) noexcept { fShowMainForm = value; }

  /// Title of dialogs; the name of the program's file unless set.
  TString GetTitle() const;
  void SetTitle(TString value) { fTitle = std::move(value); }
  /// A dialog with a text. `flags` and the result (IDOK ...) are those of the platform's message
  /// box; an empty caption is the title.
  int MessageBox(const TString& text, const TString& caption = {}, std::uint32_t flags = 0);

  // --- hints -----------------------------------------------------------------------------------

  /// Whether controls with ShowHint show their hints; default true.
  bool GetShowHint() const noexcept { return fShowHint; }
  void SetShowHint(bool value) noexcept { fShowHint = value; }
  /// Milliseconds that the mouse has to rest before a hint appears; default 500.
  int GetHintPause() const noexcept { return fHintPause; }
  void SetHintPause(int value) noexcept { fHintPause = value; }
  /// Milliseconds that a hint stays; default 2500.
  int GetHintHidePause() const noexcept { return fHintHidePause; }
  void SetHintHidePause(int value) noexcept { fHintHidePause = value; }
  /// The long hint of what is under the mouse, for a status line. Setting it fires OnHint.
  const TString& GetHint() const noexcept { return fHint; }
  void SetHint(const TString& value);

  TNotifyEvent OnHint;
  /// Nothing waits. Done false asks for another call instead of a wait.
  std::function<void(TObject* Sender, bool& Done)> OnIdle;
  /// A message that a control posted to itself arrives. Handled keeps it from the control.
  std::function<void(TWinControl* Receiver, TMessage& Message, bool& Handled)> OnMessage;

  // --- for controls ----------------------------------------------------------------------------
  void HintEnters(TWinControl& control);
  void HintLeaves();
  void FormDestroyed(TCustomForm& form) noexcept;

 private:
  void Report(TObject* sender, const std::exception_ptr& exception) noexcept;
  void Adopt(std::unique_ptr<TCustomForm> form);
  bool ProcessMessage();
  void Idle();

  std::atomic<bool> fIsLibrary{false};
  std::atomic<bool> fTerminated{false};
  TComponent fForms;  // owner of the forms of CreateForm
  TCustomForm* fMainForm = nullptr;
  TString fTitle;
  TString fHint;
  int fHintPause = 500;
  int fHintHidePause = 2500;
  bool fShowMainForm = true;
  bool fShowHint = true;
  bool fShowingException = false;
};

/// The parts of a hint "short|long"; without a bar both are the whole.
TString GetShortHint(const TString& hint);
TString GetLongHint(const TString& hint);

/// The process's application; never destroyed.
TApplication& Application();

/// The message of an exception, or its kind if it has none.
TString ExceptionText(const std::exception_ptr& exception);

}  // namespace oak

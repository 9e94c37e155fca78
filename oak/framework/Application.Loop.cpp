// The application's message loop, its forms, dialogs and hints.
#include <algorithm>
#include <array>

#include "oak/framework/Application.h"
#include "oak/framework/Dialogs.h"
#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Host.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/WidgetSet.h"
#include "oak/platform/Api.h"

namespace oak {

// --- loop ----------------------------------------------------------------------
void TApplication::Run() {
  fTerminated = false;
  if (fMainForm && fShowMainForm) fMainForm->Show();
  while (!fTerminated) {
    try {
      HandleMessage();
    } catch (...) {
      HandleException(nullptr);
    }
  }
  while (TComponent* form = fForms.GetComponent(fForms.GetComponentCount() - 1)) delete form;
}

void TApplication::Terminate() noexcept {
  fTerminated = true;
  try {
    TMainThreadQueue::Instance().Post([] {});  // ends a wait of the loop
  } catch (...) {
    // No memory: the loop ends with its next message.
  }
}

bool TApplication::ProcessMessage() {
  TMainThreadQueue& queue = TMainThreadQueue::Instance();
  const bool ran = queue.GetPending() > 0 && queue.CheckSynchronize();
  return WidgetSet().ProcessMessage() || ran;
}

void TApplication::ProcessMessages() {
  while (ProcessMessage()) {
  }
}

void TApplication::HandleMessage() {
  if (!ProcessMessage()) Idle();
}

void TApplication::Idle() {
  bool done = true;
  FireEvent(OnIdle, this, done);
  if (done && !fTerminated) WidgetSet().WaitMessage();
}

// --- forms ---------------------------------------------------------------------
void TApplication::Adopt(std::unique_ptr<TCustomForm> form) {
  fForms.InsertComponent(form.get());
  if (!fMainForm) fMainForm = form.get();
  form.release();
}

void TApplication::FormDestroyed(TCustomForm& form) noexcept {
  if (fMainForm != &form) return;
  fMainForm = nullptr;
  Terminate();
}

// --- dialogs -------------------------------------------------------------------
TString TApplication::GetTitle() const {
  if (!fTitle.empty()) return fTitle;
  TString path(256, u'\0');
  for (DWORD length = 0;; path.resize(path.size() * 2)) {
    length = Api().GetModuleFileNameW(nullptr, WBuffer(path), static_cast<DWORD>(path.size()));
    if (length >= path.size()) continue;
    path.resize(length);
    break;
  }
  const TString name = ExtractFileName(path);
  return name.substr(0, name.size() - ExtractFileExt(name).size());
}

void TApplication::ShowException(const std::exception_ptr& exception) {
  const TString text = ExceptionText(exception);
  if (fShowingException || !Host().IsInteractive || !Host().IsInteractive()) {
    Api().OutputDebugStringW(W(text));
    return;
  }
  fShowingException = true;
  try {
    MessageDlg(text, mtError, mbOK);
  } catch (...) {
    Api().OutputDebugStringW(W(text));
  }
  fShowingException = false;
}

int TApplication::MessageBox(const TString& text, const TString& caption, std::uint32_t flags) {
  // Each hexadecimal digit of the flags is a choice: buttons, kind, default button.
  static constexpr std::array<std::array<TMsgDlgButton, 3>, 6> sets{{{mbOK, mbOK, mbOK},
                                                                     {mbOK, mbCancel, mbOK},
                                                                     {mbAbort, mbRetry, mbIgnore},
                                                                     {mbYes, mbNo, mbCancel},
                                                                     {mbYes, mbNo, mbYes},
                                                                     {mbRetry, mbCancel, mbRetry}}};
  static constexpr std::array<TMsgDlgType, 5> kinds{mtCustom, mtError, mtConfirmation, mtWarning,
                                                    mtInformation};
  const auto& set = sets[std::min<std::size_t>(flags & 0xF, sets.size() - 1)];
  const TMsgDlgType kind = kinds[std::min<std::size_t>(flags >> 4 & 0xF, kinds.size() - 1)];
  const TMsgDlgButton first = set[std::min<std::size_t>(flags >> 8 & 0xF, set.size() - 1)];
  return MessageDialog(caption.empty() ? GetTitle() : caption, {}, text, kind,
                       {set[0], set[1], set[2]}, first);
}

// --- hints ---------------------------------------------------------------------
TString GetShortHint(const TString& hint) { return hint.substr(0, hint.find(u'|')); }

TString GetLongHint(const TString& hint) { return hint.substr(hint.find(u'|') + 1); }

void TApplication::SetHint(const TString& value) {
  if (value == fHint) return;
  fHint = value;
  FireEvent(OnHint, this);
}

void TApplication::HintEnters(TWinControl& control) {
  const TWinControl* owner = &control;
  while (owner->GetHint().empty() && owner->GetParent()) owner = owner->GetParent();
  SetHint(GetLongHint(owner->GetHint()));
}

void TApplication::HintLeaves() { SetHint({}); }

}  // namespace oak

#include "oak/framework/Forms.h"

#include <algorithm>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/Application.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/ControlScopes.h"
#include "oak/framework/Events.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Menus.h"
#include "oak/framework/Styles.h"

namespace oak {
namespace {

constexpr int DefaultFormWidth = 640;
constexpr int DefaultFormHeight = 480;
constexpr int CascadeStep = 26;  // a title bar, at 96 pixels per inch
constexpr int CascadeSteps = 8;

}  // namespace

// --- handlers that run ---------------------------------------------------------
THandlerScope::THandlerScope(TControl& control) : fForm(control.GetParentForm()) {
  if (!fForm) return;
  fGuard = fForm->GetLifeGuard();
  ++fForm->fHandlerDepth;
}

THandlerScope::~THandlerScope() {
  if (fForm && fGuard.IsAlive() && --fForm->fHandlerDepth == 0 && fForm->fReleasing)
    fForm->PostRelease();
}

// --- life ----------------------------------------------------------------------
TCustomForm::TCustomForm(TComponent* owner) : TWinControl(owner) {
  SetVisibleFlagOnly(false);
  SetTabStop(false);
  TWinControl::SetBounds(0, 0, DefaultFormWidth, DefaultFormHeight);
  fStyleWatch = TStyleManager::OnChange([this] { StyleChanged(); });
  Screen().fForms.push_back(this);
}

TCustomForm::~TCustomForm() {
  RunFenced(*this, [this] { FireEvent(OnDestroy, this); });
  BeginDestroy();
  fStyleWatch.reset();
  TScreen& screen = Screen();
  std::erase(screen.fForms, this);
  if (screen.fActiveForm == this) screen.fActiveForm = nullptr;
  Application().FormDestroyed(*this);
}

void TCustomForm::Release() {
  if (std::exchange(fReleasing, true)) return;
  if (fHandlerDepth == 0) PostRelease();
}

void TCustomForm::PostRelease() {
  TMainThreadQueue::Instance().Post([this, guard = GetLifeGuard()] {
    if (!guard.IsAlive()) return;
    // A loop within a handler came here: its end posts the release again.
    if (fHandlerDepth == 0) delete this;
  });
}

void TCustomForm::Notification(TComponent* component, TOperation operation) {
  TWinControl::Notification(component, operation);
  if (operation != opRemove || component != fMenu) return;
  fMenu = nullptr;
  if (fFormPeer) fFormPeer->SetMenu(nullptr);
}

// --- the window ----------------------------------------------------------------
std::unique_ptr<IControlPeer> TCustomForm::CreatePeer() {
  std::unique_ptr<IFormPeer> peer = WidgetSet().CreateForm(*this);
  fFormPeer = peer.get();
  return peer;
}

void TCustomForm::CreateWnd() {
  const TLifeGuard guard = GetLifeGuard();
  TWinControl::CreateWnd();
  if (fIcon) fFormPeer->SetIcon(fIcon.get());
  if (fMenu) fFormPeer->SetMenu(fMenu);
  if (guard.IsAlive() && fFormPeer) HandlePixelsPerInch(fFormPeer->GetPixelsPerInch());
  if (guard.IsAlive() && fFormPeer && fWindowState != wsNormal)
    fFormPeer->SetWindowState(fWindowState);
}

void TCustomForm::DestroyWnd() {
  fFormPeer = nullptr;
  TWinControl::DestroyWnd();
}

void TCustomForm::SetVisible(bool value) {
  if (value == GetVisible()) return;
  const TLifeGuard guard = GetLifeGuard();
  if (value) {
    HandleNeeded();
    PlaceAtFirst();
    DoShow();
  } else {
    if (fModal && fModalResult == mrNone) fModalResult = mrCancel;
    DoHide();
  }
  if (guard.IsAlive()) TWinControl::SetVisible(value);
}

void TCustomForm::Show() {
  const TLifeGuard guard = GetLifeGuard();
  SetVisible(true);
  if (guard.IsAlive() && fFormPeer && GetVisible()) fFormPeer->Activate();
}

void TCustomForm::SetBounds(int left, int top, int width, int height) {
  if (fPosition == poDefault && TPoint(left, top) != GetBoundsRect().TopLeft())
    fPosition = poDesigned;
  TWinControl::SetBounds(left, top, width, height);
}

void TCustomForm::PlaceAtFirst() {
  if (std::exchange(fPlaced, true) || fPosition == poDesigned || GetParent() || GetParentWindow())
    return;
  const TRect area = Screen().GetWorkArea();
  TRect around = area;
  const TCustomForm* main = Application().GetMainForm();
  if (fPosition == poMainFormCenter && main && main != this && main->GetVisible())
    around = main->GetBoundsRect();
  TPoint corner = around.Center() - TPoint(GetWidth() / 2, GetHeight() / 2);
  if (fPosition == poDefault) {
    const int step = (Screen().GetFormCount() - 1) % CascadeSteps;
    corner =
        area.TopLeft() + TPoint(ScaledPixels(CascadeStep) * step, ScaledPixels(CascadeStep) * step);
  }
  corner.X = std::max(corner.X, area.Left);
  corner.Y = std::max(corner.Y, area.Top);
  TWinControl::SetBounds(corner.X, corner.Y, GetWidth(), GetHeight());
}

void TCustomForm::SetWindowState(TWindowState value) {
  if (value == fWindowState) return;
  fWindowState = value;
  if (fFormPeer) fFormPeer->SetWindowState(value);
}

void TCustomForm::HandleWindowState(TWindowState state) { fWindowState = state; }

void TCustomForm::SetFormBorderStyle(TFormBorderStyle value) {
  if (value == fFormBorderStyle) return;
  fFormBorderStyle = value;
  RecreateWnd();
}

void TCustomForm::TextChanged() {
  if (fFormPeer) fFormPeer->SetCaption(GetText());
}

void TCustomForm::SetIcon(const TBitmap& value) {
  std::unique_ptr<TBitmap> icon;
  if (!value.IsEmpty()) {
    icon = std::make_unique<TBitmap>();
    icon->Assign(&value);
  }
  if (fFormPeer) fFormPeer->SetIcon(icon.get());
  fIcon = std::move(icon);
}

void TCustomForm::SetMenu(TMainMenu* value) {
  if (value == fMenu) return;
  if (fMenu) fMenu->fForm = nullptr;
  fMenu = value;
  if (value) value->fForm = this;
  FreeNotification(value);
  if (fFormPeer) fFormPeer->SetMenu(value);
}

void TCustomForm::HandleMenuCommand(UINT command) {
  if (IsDestroying() || !fMenu) return;
  RunFenced(*this, [&] { fMenu->DispatchCommand(command); });
}

void TCustomForm::HandlePixelsPerInch(int value) {
  if (fScaled) TWinControl::HandlePixelsPerInch(value);
}

// --- activation ----------------------------------------------------------------
void TCustomForm::HandleActivate(bool active) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] {
    const TLifeGuard guard = GetLifeGuard();
    TScreen& screen = Screen();
    const bool isChange = active != fActive;
    fActive = active;
    if (active)
      screen.fActiveForm = this;
    else if (screen.fActiveForm == this)
      screen.fActiveForm = nullptr;
    if (isChange && !IsRecreating()) active ? Activate() : Deactivate();
    if (!guard.IsAlive()) return;
    if (fActive && GetVisible()) FocusActiveControl();
    if (guard.IsAlive() && isChange && !IsRecreating()) FireEvent(screen.OnActiveFormChange, this);
  });
}

void TCustomForm::Activate() { FireEvent(OnActivate, this); }
void TCustomForm::Deactivate() { FireEvent(OnDeactivate, this); }
void TCustomForm::DoShow() { FireEvent(OnShow, this); }
void TCustomForm::DoHide() { FireEvent(OnHide, this); }

// --- closing -------------------------------------------------------------------
bool TCustomForm::CloseQuery() {
  bool canClose = true;
  FireEvent(OnCloseQuery, this, canClose);
  return canClose;
}

void TCustomForm::DoClose(TCloseAction& action) { FireEvent(OnClose, this, action); }

void TCustomForm::HandleCloseRequest() {
  if (!IsDestroying()) RunFenced(*this, [this] { Close(); });
}

void TCustomForm::Close() {
  if (fModal) {
    SetModalResult(mrCancel);
    return;
  }
  const TLifeGuard guard = GetLifeGuard();
  if (!CloseQuery() || !guard.IsAlive()) return;
  TCloseAction action = caHide;
  DoClose(action);
  if (guard.IsAlive()) CloseAs(action);
}

void TCustomForm::CloseAs(TCloseAction action) {
  if (action == caNone) return;
  if (action == caMinimize) {
    SetWindowState(wsMinimized);
    return;
  }
  if (Application().GetMainForm() == this) Application().Terminate();
  const TLifeGuard guard = GetLifeGuard();
  Hide();
  if (guard.IsAlive() && action == caFree) Release();
}

// --- modal ---------------------------------------------------------------------
void TCustomForm::SetModalResult(TModalResult value) {
  fModalResult = value;
  if (fModal) WidgetSet().WakeUp();
}

// Whether a result is there and the form lets itself be closed with it.
bool TCustomForm::MayEndModal(bool terminated) {
  if (terminated) {
    if (fModalResult == mrNone) fModalResult = mrCancel;
    return true;
  }
  if (fModalResult == mrNone) return false;
  const TLifeGuard guard = GetLifeGuard();
  TCloseAction action = caHide;
  const bool canClose = CloseQuery();
  if (!guard.IsAlive()) return true;
  if (canClose) DoClose(action);
  if (!guard.IsAlive()) return true;
  if (!canClose || action == caNone) fModalResult = mrNone;
  if (fModalResult != mrNone && action == caFree) Release();
  return fModalResult != mrNone;
}

TModalResult TCustomForm::ShowModal() {
  if (GetVisible() || fModal || !GetEnabled())
    throw EInvalidOperation(u"Cannot make a visible window modal.");
  const TLifeGuard guard = GetLifeGuard();
  TCustomForm* former = Screen().GetActiveForm();
  const TLifeGuard formerGuard = former ? former->GetLifeGuard() : TLifeGuard();
  TModalResult result = mrCancel;
  {
    const TMemberScope modal(*this, fModal, true);
    const THandlerScope handler(*this);
    fModalResult = mrNone;
    bool ended = false;
    const bool wasTerminated = Application().GetTerminated();
    const std::function<bool()> isEnded = [&] {
      const bool terminated = !wasTerminated && Application().GetTerminated();
      if (!ended) ended = !guard.IsAlive() || MayEndModal(terminated);
      if (ended && guard.IsAlive()) result = fModalResult;
      return ended;
    };
    Show();
    // The window may be made anew meanwhile: the new one goes on.
    while (!isEnded()) {
      HandleNeeded();
      fFormPeer->RunModal(isEnded);
    }
    if (guard.IsAlive()) Hide();
  }
  if (former && formerGuard.IsAlive() && former->fFormPeer && former->GetVisible())
    former->fFormPeer->Activate();
  return result;
}

}  // namespace oak

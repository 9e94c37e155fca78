// Forms, the screen, splitters.
#pragma once

#include <memory>
#include <vector>

#include "oak/framework/WidgetSet.h"
#include "oak/framework/WinControl.h"

namespace oak {

class TMainMenu;

enum TCloseAction : std::uint8_t { caNone, caHide, caFree, caMinimize };
enum TFormBorderStyle : std::uint8_t { bsFormNone, bsSizeable, bsDialog, bsToolWindow };
enum TPosition : std::uint8_t { poDesigned, poDefault, poScreenCenter, poMainFormCenter };

/// Results of dialogs; 0 while a dialog is open.
enum TModalResult : std::int16_t {
  mrNone = 0,
  mrOk = 1,
  mrCancel = 2,
  mrAbort = 3,
  mrRetry = 4,
  mrIgnore = 5,
  mrYes = 6,
  mrNo = 7,
  mrClose = 8,
  mrAll = 12
};

/// A top-level window with controls. Invisible until Show.
class TCustomForm : public TWinControl {
 public:
  explicit TCustomForm(TComponent* owner = nullptr);
  ~TCustomForm() override;

  /// Shows the form and makes it the active one.
  void Show();
  void Hide() { SetVisible(false); }
  void SetVisible(bool value) override;
  void SetBounds(int left, int top, int width, int height) override;
  /// Asks CloseQuery; then does what OnClose says (default: hide; the main form ends the program).
  void Close();
  bool CloseQuery();
  /// Destroys the form after the present handler has returned.
  void Release();
  /// Shows the form until ModalResult is set; the program's other forms wait.
  /// Raises EInvalidOperation if it is on the screen already.
  TModalResult ShowModal();
  TModalResult GetModalResult() const noexcept { return fModalResult; }
  void SetModalResult(TModalResult value);

  TWindowState GetWindowState() const noexcept { return fWindowState; }
  void SetWindowState(TWindowState value);
  TFormBorderStyle GetFormBorderStyle() const noexcept { return fFormBorderStyle; }
  void SetFormBorderStyle(TFormBorderStyle value);
  TPosition GetPosition() const noexcept { return fPosition; }
  void SetPosition(TPosition value) { fPosition = value; }
  TMainMenu* GetMenu() const noexcept { return fMenu; }
  void SetMenu(TMainMenu* value);
  /// Picture of the title bar; copied. An empty one gives that of the system.
  void SetIcon(const TBitmap& value);
  const TBitmap* GetIcon() const noexcept { return fIcon.get(); }
  /// Keys reach the form's own handlers before the control's.
  bool GetKeyPreview() const noexcept { return fKeyPreview; }
  void SetKeyPreview(bool value) { fKeyPreview = value; }
  TWinControl* GetActiveControl() const noexcept { return fActiveControl; }
  /// The keyboard goes there, now or when the form becomes active. EInvalidOperation for a control
  /// of another form.
  void SetActiveControl(TWinControl* value);
  bool IsActive() const noexcept { return fActive; }
  int GetPixelsPerInch() const noexcept { return GetCurrentPPI(); }
  /// Whether sizes follow the density of the monitor; default true.
  bool GetScaled() const noexcept { return fScaled; }
  void SetScaled(bool value) { fScaled = value; }

  TNotifyEvent OnShow;
  TNotifyEvent OnHide;
  TNotifyEvent OnActivate;
  TNotifyEvent OnDeactivate;
  std::function<void(TObject* Sender, TCloseAction& Action)> OnClose;
  std::function<void(TObject* Sender, bool& CanClose)> OnCloseQuery;
  TNotifyEvent OnDestroy;

  // --- for peers -----------------------------------------------------------------------------
  void HandleActivate(bool active);
  void HandleCloseRequest();
  void HandleWindowState(TWindowState state);
  void HandleMenuCommand(UINT command);
  IFormPeer* GetFormPeer() const noexcept { return fFormPeer; }
  void HandlePixelsPerInch(int value) override;

 protected:
  std::unique_ptr<IControlPeer> CreatePeer() override;
  void CreateWnd() override;
  void DestroyWnd() override;
  void Notification(TComponent* component, TOperation operation) override;
  bool DialogKey(std::uint16_t key, TShiftState shift) override;
  void TextChanged() override;
  virtual void DoShow();
  virtual void DoHide();
  virtual void DoClose(TCloseAction& action);
  virtual void Activate();
  virtual void Deactivate();

 private:
  friend class TWinControl;
  friend class THandlerScope;
  void PlaceAtFirst();
  void CloseAs(TCloseAction action);
  bool MayEndModal(bool terminated);
  void PostRelease();

  void FocusControl(TWinControl& control);
  void FocusActiveControl();
  void ControlFocused(TWinControl& control);
  void MoveFocus(TWinControl* next);
  void ControlLeaves(TWinControl& control);

  IFormPeer* fFormPeer = nullptr;
  TMainMenu* fMenu = nullptr;
  std::unique_ptr<TBitmap> fIcon;
  std::shared_ptr<void> fStyleWatch;
  TWinControl* fActiveControl = nullptr;  // gets the keyboard when the form is active
  TWinControl* fFocused = nullptr;        // the last one that had it: between OnEnter and OnExit
  TWinControl* fLeaving = nullptr;        // about to be unable to have it
  TModalResult fModalResult = mrNone;
  TWindowState fWindowState = wsNormal;
  TFormBorderStyle fFormBorderStyle = bsSizeable;
  TPosition fPosition = poDefault;
  bool fKeyPreview = false;
  bool fActive = false;
  bool fScaled = true;
  bool fModal = false;
  bool fPlaced = false;  // had its first place on the screen
  bool fReleasing = false;
  int fHandlerDepth = 0;  // handlers of the form and its controls that run
};
using TForm = TCustomForm;

/// A bar between two aligned controls; dragging it sizes the one before it, which has the same
/// alignment and stands on its outer side. Escape or a lost mouse takes the drag back.
class TSplitter : public TCustomControl {
 public:
  explicit TSplitter(TComponent* owner = nullptr);
  /// Sets the cursor too.
  void SetAlign(TAlign value) override;
  /// Smallest size of either side, in pixels; default 30.
  int GetMinSize() const noexcept { return fMinSize; }
  void SetMinSize(int value) { fMinSize = value; }
  /// The control that it sizes, or nil.
  TControl* FindControl() const;

  std::function<void(TObject* Sender, int& NewSize, bool& Accept)> OnCanResize;
  TNotifyEvent OnMoved;

 protected:
  void MouseDown(TMouseButton button, TShiftState shift, int x, int y) override;
  void MouseMove(TShiftState shift, int x, int y) override;
  void MouseUp(TMouseButton button, TShiftState shift, int x, int y) override;
  void KeyDown(std::uint16_t& key, TShiftState shift) override;
  void Paint(TCanvas& canvas, const TRect& clip) override;
  void ChangeScale(int m, int d) override;
  void CaptureLost() override;
  void Notification(TComponent* component, TOperation operation) override;

 private:
  void SizeTo(int size);
  int MaxSize() const;
  TControl* fSized = nullptr;
  TPoint fStart;
  int fStartSize = 0;
  int fMinSize = 30;
};

/// The screen: monitors, cursor, forms. Main thread.
class TScreen {
 public:
  int GetMonitorCount() const;
  TMonitorInfo GetMonitor(int index) const;
  TMonitorInfo MonitorFromPoint(TPoint point) const;
  int GetPixelsPerInch() const;  ///< Of the primary monitor.
  TRect GetWorkArea() const;
  /// Cursor that all windows show; crDefault gives each its own. Nests with THourGlass.
  TCursor GetCursor() const noexcept { return fCursor; }
  void SetCursor(TCursor value);
  int GetFormCount() const noexcept { return static_cast<int>(fForms.size()); }
  TCustomForm* GetForm(int index) const;
  TCustomForm* GetActiveForm() const noexcept { return fActiveForm; }
  TWinControl* GetActiveControl() const noexcept;
  TPoint GetMousePos() const;

  TNotifyEvent OnActiveFormChange;

 private:
  friend class TCustomForm;
  std::vector<TCustomForm*> fForms;
  TCustomForm* fActiveForm = nullptr;
  TCursor fCursor = crDefault;
};

TScreen& Screen();

/// Text and files on the clipboard. Main thread.
class TClipboard {
 public:
  TString GetAsText() const;
  /// Raises EOSError if another program holds the clipboard too long.
  void SetAsText(const TString& value);
  bool HasText() const;
};

TClipboard& Clipboard();

}  // namespace oak

#include "oak/framework/win32/Services.h"

#include <atomic>
#include <cstring>
#include <unordered_map>

#include "oak/base/InterfacedObject.h"
#include "oak/framework/Application.h"
#include "oak/framework/win32/System.h"
#include "oak/platform/Api.h"

namespace oak::win32 {
namespace {

// --- clipboard -----------------------------------------------------------------------------------

/// Another program may hold the clipboard for a moment.
constexpr int ClipboardTries = 10;
constexpr DWORD ClipboardPause = 10;  // milliseconds

class TOpenClipboard {
 public:
  /// Who writes needs a window: contents of nobody are refused.
  explicit TOpenClipboard(HWND owner) {
    for (int i = 0; i < ClipboardTries && !fOpen; ++i) {
      if (i > 0) Api().Sleep(ClipboardPause);
      fOpen = ::OpenClipboard(owner) != FALSE;
    }
  }
  ~TOpenClipboard() {
    if (fOpen) ::CloseClipboard();
  }
  TOpenClipboard(const TOpenClipboard&) = delete;
  TOpenClipboard& operator=(const TOpenClipboard&) = delete;
  explicit operator bool() const noexcept { return fOpen; }

 private:
  bool fOpen = false;
};

// --- drag and drop -------------------------------------------------------------------------------

/// The usual rules: Escape or the other button cancels, letting go drops.
class TPlainDropSource final : public TInterfacedObject<IDropSource> {
 public:
  explicit TPlainDropSource(DWORD button) : fButton(button) {}
  HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escape, DWORD keys) noexcept override {
    const DWORD other = fButton == MK_LBUTTON ? MK_RBUTTON : MK_LBUTTON;
    if (escape || (keys & other)) return DRAGDROP_S_CANCEL;
    return keys & fButton ? S_OK : DRAGDROP_S_DROP;
  }
  HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD) noexcept override {
    return DRAGDROP_S_USEDEFAULTCURSORS;
  }

 private:
  DWORD fButton;
};

// --- timers --------------------------------------------------------------------------------------

class TTimerPeer;

/// Running timers by their numbers, which are never used twice: a tick of a timer that has ended,
/// still in the queue, finds nothing.
std::unordered_map<UINT_PTR, TTimerPeer*>& RunningTimers() {
  static auto* timers = new std::unordered_map<UINT_PTR, TTimerPeer*>;
  return *timers;
}

class TTimerPeer final : public ITimerPeer {
 public:
  TTimerPeer(HWND window, unsigned milliseconds, std::function<void()> tick)
      : fWindow(window), fTick(std::move(tick)) {
    static UINT_PTR last = 0;
    fId = ++last;
    if (!::SetTimer(window, fId, milliseconds, nullptr))
      RaiseLastError(u"A timer could not be started");
    RunningTimers()[fId] = this;
  }
  ~TTimerPeer() override {
    RunningTimers().erase(fId);
    ::KillTimer(fWindow, fId);
  }
  static void Tick(UINT_PTR id) {
    const auto found = RunningTimers().find(id);
    if (found == RunningTimers().end()) return;
    // A copy: the handler may end the timer.
    const std::function<void()> tick = found->second->fTick;
    tick();
  }

 private:
  HWND fWindow;
  UINT_PTR fId = 0;
  std::function<void()> fTick;
};

LRESULT CALLBACK ServiceProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_TIMER) return ::DefWindowProcW(window, message, wParam, lParam);
  try {
    TTimerPeer::Tick(wParam);
  } catch (...) {
    Application().HandleException(nullptr);
  }
  return 0;
}

}  // namespace

bool ReadClipboardText(TString* text) {
  if (!::IsClipboardFormatAvailable(CF_UNICODETEXT)) return false;
  const TOpenClipboard clipboard(nullptr);
  const HANDLE data = clipboard ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
  const auto content = data ? static_cast<const char16_t*>(::GlobalLock(data)) : nullptr;
  if (!content) return false;
  // Not every program ends the text with a zero.
  const TStringView all(content, ::GlobalSize(data) / sizeof(char16_t));
  *text = TString(all.substr(0, all.find(u'\0')));
  ::GlobalUnlock(data);
  return true;
}

bool WriteClipboardText(HWND owner, const TString& text) {
  const std::size_t size = (text.size() + 1) * sizeof(char16_t);
  const HGLOBAL data = ::GlobalAlloc(GMEM_MOVEABLE, size);
  void* content = data ? ::GlobalLock(data) : nullptr;
  if (content) {
    std::memcpy(content, text.c_str(), size);
    ::GlobalUnlock(data);
    const TOpenClipboard clipboard(owner);
    if (clipboard && ::EmptyClipboard() && ::SetClipboardData(CF_UNICODETEXT, data)) return true;
  }
  if (data) ::GlobalFree(data);
  return false;
}

HRESULT DragData(HWND window, IDataObject* data, IDropSource* source, DWORD allowed,
                 DWORD* effect) {
  *effect = DROPEFFECT_NONE;
  Ref<IDropSource> used = Ref<IDropSource>::Share(source);
  const bool images = Api().SHDoDragDrop && !IsWine();
  // Without a source of the program the system takes one of its own, which draws images.
  if (!used && !images)
    used = Ref<IDropSource>::Adopt(
        new TPlainDropSource(::GetKeyState(VK_RBUTTON) < 0 ? MK_RBUTTON : MK_LBUTTON));
  if (images) return Api().SHDoDragDrop(window, data, used.Get(), allowed, effect);
  return ::DoDragDrop(data, used.Get(), allowed, effect);
}

TServiceWindow::TServiceWindow() {
  static const TString name = RegisterOwnClass(u"Services", &ServiceProc);
  fHandle = ::CreateWindowExW(0, W(name), nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              OwnModule(), nullptr);
  if (!fHandle) RaiseLastError(u"A window could not be created");
}

TServiceWindow::~TServiceWindow() { ::DestroyWindow(fHandle); }

void TServiceWindow::Wake() const noexcept { ::PostMessageW(fHandle, WM_NULL, 0, 0); }

std::unique_ptr<ITimerPeer> MakeTimer(HWND window, unsigned milliseconds,
                                      std::function<void()> tick) {
  return std::make_unique<TTimerPeer>(window, milliseconds, std::move(tick));
}

}  // namespace oak::win32

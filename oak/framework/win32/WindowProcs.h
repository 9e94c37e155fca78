// The window procedures of the Win32 widget set: from the system's window to the peer.
#pragma once

#include <memory>

#include "oak/framework/win32/WindowPeer.h"

namespace oak {

/// The procedures that the system calls, and who is known to them. Main thread only.
class TWindowProcs {
 public:
  /// Class of windows that a control paints, double clicks included; registered at first use.
  static LPCWSTR PaintedClass();
  /// Class of forms: as above, with an icon.
  static LPCWSTR FormClass();
  /// Number of the message that brings what Post queued.
  static UINT PostedMessage();

  static std::shared_ptr<TWindowLink> FindLink(HWND window);
  static void Remember(const std::shared_ptr<TWindowLink>& link);
  static void Forget(HWND window);
  /// Chains our procedure before that of a common control or inner window.
  static bool Subclass(HWND window);

  /// Destroys the window of a link without peer: now, or when its procedures have returned.
  static void Dispose(const std::shared_ptr<TWindowLink>& link);
  /// Passes what a child sent its parent to the child's peer. True if `result` is the answer.
  static bool Reflect(TWindowPeer* receiver, UINT message, WPARAM wParam, LPARAM lParam,
                      LRESULT& result);

  /// Lets a window that is not ours reflect what our children send it; calls are counted.
  static void HookParent(HWND parent);
  static void UnhookParent(HWND parent);

  /// The link whose window is being made: the first message of it binds them.
  class TBirth {
   public:
    explicit TBirth(const std::shared_ptr<TWindowLink>& link);
    ~TBirth();
    TBirth(const TBirth&) = delete;
    TBirth& operator=(const TBirth&) = delete;

   private:
    std::shared_ptr<TWindowLink> fFormer;
  };

  static LRESULT DefaultProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

 private:
  static LRESULT CALLBACK OwnProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  static LRESULT CALLBACK ChainedProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR id, DWORD_PTR data);
  static LRESULT CALLBACK ForeignProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR id, DWORD_PTR data);
  static LRESULT Run(const std::shared_ptr<TWindowLink>& link, UINT message, WPARAM wParam,
                     LPARAM lParam);
  static LRESULT RunPeer(TWindowLink& link, UINT message, WPARAM wParam, LPARAM lParam);
  static void ParkBusyChildren(HWND window);
};

}  // namespace oak

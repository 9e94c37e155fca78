// Drag and drop between windows of the headless desktop.
#pragma once

#include "oak/base/Ref.h"
#include "oak/framework/headless/HeadlessInput.h"
#include "oak/framework/headless/HeadlessWindow.h"

namespace oak {

/// One drag. Source and target are called as the system does it: at each piece of input and at
/// intervals of 50 ms the source is asked whether to go on; then the target under the pointer (its
/// window or the nearest one around it that has a target) is entered, passed over or left, and the
/// source is told the effect.
class THeadlessDrag final : private IHeadlessInputFilter {
 public:
  THeadlessDrag(THeadlessDesktop& desktop, IDataObject* data, IDropSource* source, DWORD allowed);
  ~THeadlessDrag();
  THeadlessDrag(const THeadlessDrag&) = delete;
  THeadlessDrag& operator=(const THeadlessDrag&) = delete;

  /// Runs until the user drops or cancels; the results are those of DoDragDrop.
  HRESULT Run(DWORD* effect);

 private:
  void Mouse(const THeadlessInput& input) override;
  void Key(const THeadlessInput& input) override;
  void Step(bool escape);
  HRESULT AskSource(bool escape, DWORD keys);
  void Track(DWORD keys);
  void Leave();
  void Drop(DWORD keys);
  void Finish(HRESULT result, DWORD effect);
  THeadlessWindow* TargetWindow() const;

  THeadlessDesktop& fDesktop;
  Ref<IDataObject> fData;
  Ref<IDropSource> fSource;
  Ref<IDropTarget> fTarget;
  HWND fTargetWindow = nullptr;
  DWORD fAllowed;
  DWORD fEffect = 0;
  HRESULT fResult = S_OK;
  bool fFinished = false;
  bool fBusy = false;
  IHeadlessInputFilter* fFormerFilter;
};

}  // namespace oak

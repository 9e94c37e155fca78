// The window of a list view: the system's list control in its virtual form.
//
// The native list has a number of rows and asks for what it draws; texts, images and states lie in
// the model alone. Only the selection and the focus are kept twice, since the native list paints
// and changes them by itself: what the user does is reported, what the program does is pushed.
#pragma once

#include <array>
#include <vector>

#include "oak/framework/ListView.h"
#include "oak/framework/win32/CanvasWin32.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak {

class TListPeer final : public TWindowPeer, public IListViewPeer {
 public:
  explicit TListPeer(TCustomListView& view);
  ~TListPeer() override;
  void Create();

  // --- IListViewPeer -------------------------------------------------------------------------
  void ItemsInserted(int index, int count) override;
  void ItemsDeleted(int index, int count) override;
  void ItemsReset() override;
  void ItemsChanged(int first, int last) override;
  void ItemStatesChanged(int first, int last) override;
  void BeginUpdate() override { PausePainting(); }
  void EndUpdate() override { ResumePainting(); }
  void ColumnsChanged() override;
  void ColumnWidthChanged(int column) override;
  void SetViewStyle() override;
  void ImagesChanged(TListImages which) override;
  void SetIconSpacing(int width, int height) override;
  void SetDefaultColumnWidth(int width) override;
  void SetBackground() override { Invalidate(nullptr); }
  void Arrange() override;
  TRect GetItemRect(int index, TDisplayCode code) const override;
  TRect GetSubItemRect(int index, int column) const override;
  TListHitTest HitTest(TPoint point) const override;
  int GetTopIndex() const override;
  int GetVisibleRowCount() const override;
  void MakeVisible(int index, bool partialOk) override;
  void Scroll(int dx, int dy) override;
  int GetStringWidth(const TString& text) const override;
  bool BeginEdit(int index) override;
  void EndEdit(bool cancel) override;
  HWND GetEditHandle() const override;
  TString GetEditText() const override;
  void SetEditText(const TString& text) override;
  void SelectEditText(int start, int end) override;
  HWND GetHeaderHandle() const override;
  TRect GetHeaderRect() const override;
  int HeaderHitTest(TPoint point) const override;

  // --- TWindowPeer ---------------------------------------------------------------------------
  void ColorsChanged() override;
  bool HandleNotify(NMHDR& notification, LRESULT& result) override;

 protected:
  void Initialize() override;
  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
  bool HandleInnerNotify(NMHDR& notification, LRESULT& result) override;
  LRESULT InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;
  LPCWSTR GetThemeName(bool dark) const override;

 private:
  DWORD StyleBits() const;
  DWORD ExtendedStyleBits() const;
  void PushExtendedStyle();
  bool HasOwnChecks() const { return fView.GetCheckboxes() && !fView.GetStateImages(); }

  // Columns: the native list draws icon and label in its column 0, ours may have them anywhere.
  void MapColumns();
  int NativeColumn(int column) const;
  int ModelColumn(int native) const;
  void PushColumn(int column);
  void PushColumnOrder();
  void PushSortMark(int column);
  bool HandleHeader(NMHEADERW& header, LRESULT& result);
  void HandleHeaderRightClick();

  // Selection.
  void PushCount(bool keepView);
  void PushDueCount();
  void PushState(int index, UINT state, UINT mask);
  UINT ShownState(int index, UINT mask) const;
  int NextWithState(int index, UINT state) const;
  void PushStates(int first, int last);
  void PushAllStates();
  void PushFocus();
  void StateReported(int first, int last, UINT was, UINT is);

  // What the native list asks for.
  void GiveDisplayInfo(NMLVDISPINFOW& info);
  UINT StateOf(const TListItem& item) const;
  LRESULT CustomDraw(NMLVCUSTOMDRAW& draw);
  LRESULT DrawControl(NMLVCUSTOMDRAW& draw);
  LRESULT DrawItem(NMLVCUSTOMDRAW& draw);
  LRESULT DrawSubItem(NMLVCUSTOMDRAW& draw);
  void DrawBackground(TCanvas& canvas) const;
  void TakeLook(const TCanvas& canvas, NMLVCUSTOMDRAW& draw);
  void FillMark(NMLVCUSTOMDRAW& draw) const;
  TCustomDrawState DrawStateOf(const NMLVCUSTOMDRAW& draw) const;

  LRESULT ListProc(UINT message, WPARAM wParam, LPARAM lParam);
  bool Notified(NMHDR& notification, LRESULT& result);
  void FinishClick(TMouseButton button);
  void EndLabelEdit(const NMLVDISPINFOW& info);

  TCustomListView& fView;
  std::vector<int> fNativeOf;     // by column of the model
  std::vector<int> fModelOf;      // by column of the native list
  std::array<TString, 4> fTexts;  // given to the native list, which reads them a little later
  unsigned fNextText = 0;
  HIMAGELIST fChecks = nullptr;  // check boxes that the native list made
  TSharedFont fItemFont;         // of the row being drawn
  int fProcedures = 0;           // of the window, that run
  int fNotifications = 0;        // that are being handled
  bool fRowFocused = false;      // the window may show a focused row: it has to be searched for
  bool fPushing = false;         // the model changes the window, not the user
  bool fCountDue = false;        // rows are to go when the procedure returns
  bool fCancelling = false;      // the text of the editor is unwanted
};

}  // namespace oak

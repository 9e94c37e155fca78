// Edit, memo, rich edit, combo box with images, label, status line.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "oak/framework/WidgetSet.h"
#include "oak/framework/WinControl.h"

namespace oak {

class TImageList;
class TChangeLink;

/// Edits a line or a text.
class TCustomEdit : public TWinControl {
 public:
  explicit TCustomEdit(TComponent* owner = nullptr);
  ~TCustomEdit() override;

  /// Ends Modified, and fires OnChange if the text is another.
  void SetText(const TString& value) override;
  int GetSelStart() const;
  int GetSelLength() const;
  void SelectText(int start, int length);
  void SelectAll();
  TString GetSelText() const;
  bool GetReadOnly() const noexcept { return fReadOnly; }
  void SetReadOnly(bool value);
  /// Characters that the user can type; 0: no limit.
  int GetMaxLength() const noexcept { return fMaxLength; }
  void SetMaxLength(int value);
  const TString& GetTextHint() const noexcept { return fTextHint; }
  void SetTextHint(TString value);  ///< Shown while the text is empty.
  bool GetModified() const noexcept { return fModified; }
  void SetModified(bool value) { fModified = value; }
  bool IsMultiLine() const noexcept { return fMultiLine; }
  bool IsRich() const noexcept { return fRich; }

  TNotifyEvent OnChange;

  void HandleTextChanged(const TString& text);  ///< For the peer: the user typed.

 protected:
  std::unique_ptr<IControlPeer> CreatePeer() override;
  void CreateWnd() override;
  void DestroyWnd() override;
  bool WantsKey(std::uint16_t key, TShiftState shift) override;
  virtual void Change();
  /// What the peer is to be; for constructors.
  void SetKind(bool multiLine, bool rich);
  IEditPeer* GetEditPeer() const noexcept { return fEditPeer; }

 private:
  IEditPeer* fEditPeer = nullptr;
  TString fTextHint;
  int fMaxLength = 0;
  int fSelStart = 0;
  int fSelLength = 0;
  bool fReadOnly = false;
  bool fModified = false;
  bool fMultiLine = false;
  bool fRich = false;
};

class TEdit : public TCustomEdit {
 public:
  using TCustomEdit::TCustomEdit;
};

class TMemo : public TCustomEdit {
 public:
  explicit TMemo(TComponent* owner = nullptr);
};

/// A text with formats. Loads plain text by its byte order mark, and rich text. A change of the
/// text, by the program or the user, ends the formats when the window is made anew.
class TRichEdit : public TCustomEdit {
 public:
  explicit TRichEdit(TComponent* owner = nullptr);
  /// Formatted text of the file; plain text if it is not RTF. Raises EOSError if it can't be read.
  void LoadFromFile(const TString& path);
  void LoadFromBytes(const std::vector<std::uint8_t>& data);

 protected:
  void CreateWnd() override;
  void Change() override;

 private:
  void ShowFormats();

  std::vector<std::uint8_t> fFormatted;  // as loaded, while it is what the text is
  bool fLoading = false;
};

struct TComboExItem {
  TString Caption;
  int ImageIndex = -1;
  int SelectedImageIndex = -1;
  int Indent = 0;
  void* Data = nullptr;
};

/// A combo box whose entries have images and indents, with an edit field.
class TCustomComboBoxEx : public TWinControl {
 public:
  explicit TCustomComboBoxEx(TComponent* owner = nullptr);
  ~TCustomComboBoxEx() override;

  int GetItemCount() const noexcept { return static_cast<int>(fItems.size()); }
  /// Raises EArgumentException for an index outside 0..GetItemCount()-1, as all that take one.
  const TComboExItem& GetItem(int index) const;
  int AddItem(TComboExItem item);
  /// Replaces the entry; the text stays as it is.
  void SetItem(int index, TComboExItem item);
  void InsertItem(int index, TComboExItem item);
  void DeleteItem(int index);
  void ClearItems();
  int GetItemIndex() const noexcept { return fItemIndex; }
  /// Selects an entry, whose caption becomes the text; -1: none, and no text. Fires no event.
  void SetItemIndex(int value);
  bool GetDroppedDown() const;
  void SetDroppedDown(bool value);
  /// Text of the edit field; with ReadOnly it selects the entry of that caption, if there is one.
  void SetText(const TString& value) override;
  void SelectAll();
  TImageList* GetImages() const noexcept { return fImages; }
  void SetImages(TImageList* value);
  /// The image beside a text that is none of the entries. -1 (default) is none.
  int GetEditImageIndex() const noexcept { return fEditImageIndex; }
  void SetEditImageIndex(int value);
  bool GetReadOnly() const noexcept { return fReadOnly; }
  void SetReadOnly(bool value);  ///< Chosen from the list only.
  int GetDropDownCount() const noexcept { return fDropDownCount; }
  void SetDropDownCount(int value);
  HWND GetEditHandle() const;

  TNotifyEvent OnChange;  ///< The user typed; or selected, without OnSelect.
  TNotifyEvent OnSelect;
  TNotifyEvent OnDropDown;
  TNotifyEvent OnCloseUp;

  // For the peer.
  void HandleTextChanged(const TString& text);
  void HandleSelected(int index);
  void HandleDropDown(bool open);

 protected:
  std::unique_ptr<IControlPeer> CreatePeer() override;
  void CreateWnd() override;
  void DestroyWnd() override;
  void Notification(TComponent* component, TOperation operation) override;
  bool WantsKey(std::uint16_t key, TShiftState shift) override;
  virtual void Change();
  virtual void Select();
  virtual void DropDown();
  virtual void CloseUp();

 private:
  void ItemsChanged();
  void CheckIndex(int index, int end) const;

  IComboPeer* fComboPeer = nullptr;
  std::vector<TComboExItem> fItems;
  TImageList* fImages = nullptr;
  std::unique_ptr<TChangeLink> fImagesLink;
  int fItemIndex = -1;
  int fEditImageIndex = -1;
  int fDropDownCount = 8;
  bool fReadOnly = false;
};

/// A line of text. With a mnemonic "&" it names the next control in tab order.
class TLabel : public TCustomControl {
 public:
  explicit TLabel(TComponent* owner = nullptr);
  TAlignment GetAlignment() const noexcept { return fAlignment; }
  void SetAlignment(TAlignment value);
  /// Shortens with an ellipsis; default true.
  bool GetEllipsis() const noexcept { return fEllipsis; }
  void SetEllipsis(bool value);

 protected:
  void TextChanged() override;
  bool DialogKey(std::uint16_t key, TShiftState shift) override;
  void Paint(TCanvas& canvas, const TRect& clip) override;

 private:
  TAlignment fAlignment = taLeftJustify;
  bool fEllipsis = true;
};

/// A push button.
class TButton : public TCustomControl {
 public:
  explicit TButton(TComponent* owner = nullptr);
  /// Sets the form's modal result when clicked; 0: doesn't.
  int GetModalResult() const noexcept { return fModalResult; }
  void SetModalResult(int value) { fModalResult = value; }
  /// Clicked by Return unless another button has the keyboard.
  bool GetDefault() const noexcept { return fDefault; }
  void SetDefault(bool value);
  /// Clicked by Escape.
  bool GetCancel() const noexcept { return fCancel; }
  void SetCancel(bool value) { fCancel = value; }
  /// As the user does it; nothing if the button can't have the keyboard.
  void PerformClick();

 protected:
  void Click() override;
  void KeyDown(std::uint16_t& key, TShiftState shift) override;
  void KeyUp(std::uint16_t& key, TShiftState shift) override;
  bool DialogKey(std::uint16_t key, TShiftState shift) override;
  void WMSetFocus() override;
  void WMKillFocus() override;
  void MouseDown(TMouseButton button, TShiftState shift, int x, int y) override;
  void MouseMove(TShiftState shift, int x, int y) override;
  void MouseUp(TMouseButton button, TShiftState shift, int x, int y) override;
  void CaptureLost() override;
  void TextChanged() override;
  void Paint(TCanvas& canvas, const TRect& clip) override;

 private:
  void SetDown(bool value);

  int fModalResult = 0;
  bool fDefault = false;
  bool fCancel = false;
  bool fDown = false;       // drawn pressed
  bool fSpaceDown = false;  // the space bar will click when it comes up
};

}  // namespace oak

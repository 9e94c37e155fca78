// The rows of a list view: TListItem, its further texts, and the collection of rows.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "oak/framework/Component.h"
#include "oak/framework/WidgetSet.h"

namespace oak {

class TCustomListView;
class TListItems;

enum TItemStateFlag : std::uint8_t {
  isNone,
  isCut,
  isDropHilited,
  isFocused,
  isSelected,
  isActivating
};
using TItemStates = TSet<TItemStateFlag>;
enum TItemChange : std::uint8_t { ctText, ctImage, ctState };

/// The texts of a row beyond its caption. Twenty-four bytes while empty.
class TListSubItems {
 public:
  int GetCount() const noexcept { return static_cast<int>(fItems.size()); }
  /// Empty text outside 0..GetCount()-1.
  const TString& Get(int index) const noexcept;
  const TString& operator[](int index) const noexcept { return Get(index); }
  /// Nothing outside the range.
  void Put(int index, TString text);
  int Add(TString text);
  /// Raises EArgumentException outside 0..GetCount().
  void Insert(int index, TString text);
  /// Nothing outside the range.
  void Delete(int index);
  void Clear() noexcept;
  /// First equal text, case counts; -1 if there is none.
  int IndexOf(TStringView text) const noexcept;

 private:
  bool Has(int index) const noexcept { return index >= 0 && index < GetCount(); }

  std::vector<TString> fItems;
};

/// A row. Derive from it for rows that know more; TCustomListView::CreateListItem picks the class.
/// Owned by its list, which destroys it: by Delete here or there. What a setter changes reaches the
/// screen and TCustomListView::Change once the row is in the list. Main thread.
class TListItem : public TPersistent {
 public:
  explicit TListItem(TListItems* owner) : fOwner(owner) {}
  TListItem(const TListItem&) = delete;
  TListItem& operator=(const TListItem&) = delete;
  ~TListItem() override;

  TListItems* GetOwner() const noexcept { return fOwner; }
  TCustomListView* GetListView() const noexcept;
  /// Position, -1 before the row is in its list; mostly found where it was last time.
  int GetIndex() const;
  /// Removes and destroys the row.
  void Delete();
  /// The row is about to go: OnDeletion runs or has run.
  bool GetDeleting() const noexcept { return (fStates & StateDeleting) != 0; }

  /// Text of the first column. Asked for when the row is drawn: an override may compute it.
  virtual TString GetCaption() const { return fCaption; }
  void SetCaption(TString value);
  const TString& GetStoredCaption() const noexcept { return fCaption; }
  /// The further texts. Asked for when the row is drawn in vsReport: an override may fill them
  /// then.
  virtual TListSubItems& GetSubItems() { return fSubItems; }
  /// The texts that are there, without a fill.
  TListSubItems& GetExistingSubItems() noexcept { return fSubItems; }
  const TListSubItems& GetExistingSubItems() const noexcept { return fSubItems; }
  /// To be called after a change of sub items: asks for a paint.
  void SubItemsChanged();

  /// Image of the list's small or large images; -1 is none. The further ones fit 16 bits.
  int GetImageIndex() const noexcept { return fImageIndex; }
  void SetImageIndex(int value);
  /// Overlay 0..14 of the image list, one less than its number there; -1 is none.
  int GetOverlayIndex() const noexcept { return fOverlayIndex; }
  void SetOverlayIndex(int value);
  /// Image of the state images; -1 is none.
  int GetStateIndex() const noexcept { return fStateIndex; }
  void SetStateIndex(int value);
  /// In widths of a small image, vsReport only.
  int GetIndent() const noexcept { return fIndent; }
  void SetIndent(int value);

  bool GetSelected() const noexcept { return (fStates & StateSelected) != 0; }
  void SetSelected(bool value);
  bool GetFocused() const noexcept;
  void SetFocused(bool value);
  bool GetCut() const noexcept { return (fStates & StateCut) != 0; }
  void SetCut(bool value);
  /// Marked as the place of a drop; one row of the list at a time.
  bool GetDropTarget() const noexcept { return (fStates & StateDropTarget) != 0; }
  void SetDropTarget(bool value);
  /// The tick of the list's own check boxes (Checkboxes on, no state images).
  virtual bool GetChecked() const { return (fStates & StateChecked) != 0; }
  virtual void SetChecked(bool value);

  /// In client pixels; empty without a window.
  TRect DisplayRect(TDisplayCode code) const;
  TPoint GetPosition() const { return DisplayRect(drBounds).TopLeft(); }
  void MakeVisible(bool partialOk);
  /// Opens the editor on the caption, with the focus; false if that was refused.
  bool EditCaption();
  void CancelEdit();
  /// Asks for a paint of the row.
  void Update();
  /// Copies texts, images and the tick of another row.
  void Assign(const TPersistent* source) override;

  /// Free for the application.
  void* Data = nullptr;

 private:
  friend class TListItems;
  friend class TCustomListView;
  enum : std::uint8_t {
    StateSelected = 1,
    StateCut = 2,
    StateDropTarget = 4,
    StateChecked = 8,
    StateDeleting = 16,
    StateUntold = 32,  // its selection changed and Change has not been called for it
    StateDoomed = 64   // accepted by a DeleteIf that still runs
  };

  bool IsInList() const noexcept { return fIndex >= 0; }
  void SetSmall(std::int16_t& field, int value);

  TListItems* fOwner;
  mutable int fIndex = -1;  // where it was last seen; -1 until it is in the list
  int fImageIndex = -1;
  TString fCaption;
  TListSubItems fSubItems;
  std::int16_t fStateIndex = -1;
  std::int16_t fOverlayIndex = -1;
  std::int16_t fIndent = 0;
  std::uint8_t fStates = 0;
};

/// Pointers in an order. Inserting and removing costs as much as the way from the place of the last
/// time: nothing for a walk through the rows, whichever way it goes.
class TListRows {
 public:
  int GetCount() const noexcept { return static_cast<int>(fSlots.size()) - fGapLength; }
  /// 0..GetCount()-1.
  TListItem* At(int index) const noexcept { return fSlots[Slot(index)]; }
  void Put(int index, TListItem* item) noexcept { fSlots[Slot(index)] = item; }
  void Insert(int index, TListItem* item);
  TListItem* Remove(int index) noexcept;
  /// Drops what stands from `count` on.
  void Truncate(int count) noexcept;
  void Reserve(int count);
  /// First place from `from` on with that pointer, or -1.
  int Find(const TListItem* item, int from) const noexcept;

 private:
  std::size_t Slot(int index) const noexcept {
    return static_cast<std::size_t>(index < fGap ? index : index + fGapLength);
  }
  void MoveGap(int index) noexcept;

  std::vector<TListItem*> fSlots;  // with a gap of unused ones
  int fGap = 0;
  int fGapLength = 0;
};

/// The rows of a list view. Main thread.
class TListItems : public TPersistent {
 public:
  explicit TListItems(TCustomListView* owner) : fOwner(owner) {}
  TListItems(const TListItems&) = delete;
  TListItems& operator=(const TListItems&) = delete;
  ~TListItems() override;
  TCustomListView* GetOwner() const noexcept { return fOwner; }

  int GetCount() const noexcept { return fItems.GetCount(); }
  /// nil outside 0..GetCount()-1.
  TListItem* GetItem(int index) const noexcept {
    return index >= 0 && index < GetCount() ? At(index) : nullptr;
  }
  TListItem* operator[](int index) const noexcept { return GetItem(index); }
  TListItem* Add() { return Insert(-1); }
  /// Makes a row at `index`; -1 or the count is the end.
  TListItem* Insert(int index);
  /// Adds `item`, which the caller made for this list; index -1 is the end. nil if the list was
  /// destroyed or the row removed by a handler.
  TListItem* AddItem(std::unique_ptr<TListItem> item, int index = -1);
  /// Room for that many rows without moving them again.
  void Reserve(int count) { fItems.Reserve(count); }
  /// Nothing outside the range.
  void Delete(int index);
  /// Removes all rows that the test accepts, in one pass: linear in the number of rows. Tells how
  /// many.
  int DeleteIf(const std::function<bool(TListItem&)>& test);
  void Clear();
  /// -1 if the row is not in the list.
  int IndexOf(const TListItem* item) const;

  /// Between these the screen doesn't follow; calls nest. Costs of many changes become that of one.
  void BeginUpdate();
  void EndUpdate();
  bool IsUpdating() const noexcept { return fUpdateCount > 0; }

  /// Goes through the rows while their number stays.
  class TIterator {
   public:
    TIterator(const TListRows& rows, int index) : fRows(&rows), fIndex(index) {}
    TListItem* operator*() const noexcept { return fRows->At(fIndex); }
    TIterator& operator++() noexcept {
      ++fIndex;
      return *this;
    }
    friend bool operator==(const TIterator& a, const TIterator& b) noexcept = default;

   private:
    const TListRows* fRows;
    int fIndex;
  };
  TIterator begin() const { return {fItems, 0}; }
  TIterator end() const { return {fItems, GetCount()}; }

 private:
  friend class TListItem;
  friend class TCustomListView;

  TListItem* At(int index) const noexcept { return fItems.At(index); }
  /// Whether a pointer of before a call out still is a row. Doesn't follow it.
  bool Holds(const TListItem* item, unsigned version) const noexcept {
    return fVersion == version || fItems.Find(item, 0) >= 0;
  }
  /// Rows from `index` on have moved.
  void Moved(int index) noexcept;
  void Renumber(int end) const noexcept;
  void Erase(int index);
  void MarkDoomed(const std::function<bool(TListItem&)>& test);
  void TellDoomed();
  int EraseDoomed();
  void ClearDoomed() noexcept;
  void Forget(TListItem* item) noexcept;

  TCustomListView* fOwner;
  TListRows fItems;              // owned
  unsigned fVersion = 0;         // counts changes of number or order
  mutable int fNumbered = 0;     // rows before it know their position
  mutable bool fMissed = false;  // a position was searched since the last change
  int fUpdateCount = 0;
  int fDeleteIfDepth = 0;
  int fDoomedUntold = 0;  // doomed rows whose deletion has not been told
};

}  // namespace oak

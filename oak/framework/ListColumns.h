// The columns of a list view in vsReport.
#pragma once

#include <cstdint>
#include <memory>

#include "oak/framework/Collection.h"
#include "oak/framework/ControlTypes.h"

namespace oak {

class TCustomListView;
class TListColumns;

enum class TListSortMark : std::uint8_t { None, Up, Down };

/// A column of vsReport. Main thread.
class TListColumn : public TCollectionItem {
 public:
  /// Widths that are measured when they are set, or when the window is made: so that the texts of
  /// the visible rows fit, or those and the caption.
  static constexpr int FitTexts = -1;
  static constexpr int FitTextsAndCaption = -2;

  explicit TListColumn(TCollection* collection);

  const TString& GetCaption() const noexcept { return fCaption; }
  void SetCaption(TString value);
  /// Pixels; 0 hides the column. Default 50. Negative only while a width of FitTexts or
  /// FitTextsAndCaption waits for the window.
  int GetWidth() const noexcept { return fWidth; }
  /// Pixels, kept within the limits, or FitTexts or FitTextsAndCaption.
  void SetWidth(int value);
  int GetMinWidth() const noexcept { return fMinWidth; }
  void SetMinWidth(int value);
  /// 0 or less: no limit.
  int GetMaxWidth() const noexcept { return fMaxWidth; }
  void SetMaxWidth(int value);
  TAlignment GetAlignment() const noexcept { return fAlignment; }
  void SetAlignment(TAlignment value);
  /// Of the list's small images; -1 is none.
  int GetImageIndex() const noexcept { return fImageIndex; }
  void SetImageIndex(int value);
  TListSortMark GetSortMark() const noexcept { return fSortMark; }
  void SetSortMark(TListSortMark value);
  /// Which text of a row the column shows: 0 is the caption, n the sub item n - 1. A new column
  /// takes the next one; a column that is moved keeps its own; when one is deleted, those above
  /// close up.
  int GetTextIndex() const noexcept { return fTextIndex; }
  void SetTextIndex(int value);
  /// Copies all but the text index and the tag.
  void Assign(const TPersistent* source) override;
  TString GetDisplayName() const override { return fCaption; }

  /// Free for the application.
  std::intptr_t Tag = 0;

 private:
  friend class TCustomListView;
  friend class TListColumns;
  int Limited(int width) const noexcept;
  template <class T>
  void Set(T& field, T value);

  TString fCaption;
  int fWidth = 50;
  int fMinWidth = 0;
  int fMaxWidth = 0;
  int fImageIndex = -1;
  int fTextIndex = 0;
  TAlignment fAlignment = taLeftJustify;
  TListSortMark fSortMark = TListSortMark::None;
};

/// The columns, in the order of the screen. Main thread.
class TListColumns : public TCollection {
 public:
  /// Items come from the view's CreateListColumn.
  explicit TListColumns(TCustomListView* owner);
  ~TListColumns() override;
  TPersistent* GetOwner() const override;
  TCustomListView* GetOwnerView() const noexcept { return fOwner; }
  /// Raises EListError outside 0..GetCount()-1.
  TListColumn* GetColumn(int index) const { return static_cast<TListColumn*>(GetItem(index)); }
  TListColumn* operator[](int index) const { return GetColumn(index); }
  TListColumn* Add() { return static_cast<TListColumn*>(TCollection::Add()); }
  /// Position of the column that shows the caption; 0 if none does.
  int GetLabelColumn() const noexcept;

 protected:
  std::unique_ptr<TCollectionItem> CreateItem() override;
  void Update(TCollectionItem* item) override;
  void Notify(TCollectionItem* item, TCollectionNotification action) override;

 private:
  friend class TListColumn;
  TCustomListView* fOwner;
};

}  // namespace oak

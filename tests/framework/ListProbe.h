// A list view without a window, for tests.
#pragma once

#include <gtest/gtest.h>

#include "oak/framework/ListView.h"

namespace oak::tests {

/// Lets tests reach what only descendants may.
class TProbeList : public TCustomListView {
 public:
  using TCustomListView::ChangeScale;
  using TCustomListView::GetColumnText;

  /// Rows with these captions.
  explicit TProbeList(std::initializer_list<TString> captions = {}) {
    for (const TString& caption : captions) Items().Add()->SetCaption(caption);
  }
  TListItem* Row(int index) { return Items()[index]; }
  TString Captions() const {
    TString text;
    for (const TListItem* const item : Items()) text += item->GetCaption() + u" ";
    return text;
  }
  TString Selection() const {
    TString text;
    for (const TListItem* const item : Items())
      if (item->GetSelected()) text += item->GetCaption() + u" ";
    return text;
  }
};

inline void Fill(TCustomListView& list, int count) {
  list.Items().BeginUpdate();
  for (int i = 0; i < count; ++i) list.Items().Add()->SetCaption(IntToStr(i));
  list.Items().EndUpdate();
}

}  // namespace oak::tests

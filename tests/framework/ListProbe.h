// A list view without a window, for tests.
#pragma once

#include <gtest/gtest.h>

#include "oak/framework/ListView.h"

namespace oak::tests {

/// Lets tests reach what only descendants may.
class TProbeList : public TCustomListView {
 public:
  using TCustomListView::ChangeScale;

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

}  // namespace oak::tests
